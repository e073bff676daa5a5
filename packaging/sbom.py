#!/usr/bin/env python3
"""What is linked into the artefacts: sbom.py VERSION COMMIT SECONDS SBOM LICENCES ARTEFACT=KIND:WHERE...

Writes a CycloneDX 1.5 list and the folder of licence texts. KIND says how an artefact tells its libraries: "windows" by
the command in ninja's folder that links it (WHERE is FOLDER:FILE), "native" by what its ELF header needs (WHERE is the file). A library
that is not in the table below, or whose text is not found, is an error: nothing is shipped without its licence.
"""
import datetime
import json
import pathlib
import re
import subprocess
import sys
import uuid

# Debian source package: SPDX licence.
LICENCES = {
    "boost1.74": "BSL-1.0", "cli11": "BSD-3-Clause", "curl": "curl", "fmtlib": "MIT", "gcc-12": "GPL-3.0-or-later WITH GCC-exception-3.1",
    "gcc-mingw-w64": "GPL-3.0-or-later WITH GCC-exception-3.1", "glibc": "LGPL-2.1-or-later", "libarchive": "BSD-2-Clause",
    "libjpeg-turbo": "IJG AND BSD-3-Clause AND Zlib", "libpng1.6": "libpng-2.0", "libxml2": "MIT", "libxslt": "MIT",
    "libz-mingw-w64": "Zlib", "mingw-w64": "ZPL-2.1", "nlohmann-json3": "MIT", "nsis": "Zlib AND CPL-1.0", "openssl": "Apache-2.0",
    "qpdf": "Apache-2.0", "qr-code-generator": "MIT", "spdlog": "MIT", "sqlite3": "blessing", "zlib": "Zlib",
}
# Static library of the Windows doors: the Debian package whose version and text it has.
STATIC = {
    "libarchive": "libarchive-dev", "libcrypto": "libssl-dev", "libcurl": "libcurl4-openssl-dev", "libexslt": "libxslt1-dev",
    "libfmt": "libfmt-dev", "libjpeg": "libjpeg62-turbo-dev", "libpng": "libpng-dev", "libpng16": "libpng-dev", "libqpdf": "libqpdf-dev",
    "libqrcodegencpp": "libqrcodegencpp-dev", "libspdlog": "libspdlog-dev", "libsqlite3": "libsqlite3-dev",
    "libssl": "libssl-dev", "libxml2": "libxml2-dev", "libxslt": "libxslt1-dev", "libz": "libz-mingw-w64-dev",
}
# Without a library of their own: folder of headers, and its package.
HEADERS = {"boost": "libboost1.74-dev", "CLI": "libcli11-dev", "fmt": "libfmt-dev", "nlohmann": "nlohmann-json3-dev",
           "spdlog": "libspdlog-dev"}
# Rooms that an artefact has none of.
ABSENT = {"Tavrix.dll": ("sandbox/", "cli/", "console/"), "tavrix": ("sandbox/", "com/", "windows/"), "tavrix-sandbox": ()}
ALWAYS_ABSENT = ("tests/", "bench/", "fuzz/", "tools/", "stand_ins/", "demo/")
COMMON = pathlib.Path("/usr/share/common-licenses")
RUNTIME = ["gcc-mingw-w64-base", "mingw-w64-common"]
ACKNOWLEDGEMENT = "This software is based in part on the work of the Independent JPEG Group."


def run(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


class Component:
    def __init__(self, package):
        self.package = package
        self.source, self.version = run("dpkg-query", "-W", "-f=${source:Package} ${source:Version}\n",
                                        package).splitlines()[0].split()
        if self.source not in LICENCES:
            raise SystemExit(f"{self.source} ({package}): its licence is not known yet: add it to LICENCES")
        self.text = pathlib.Path("/usr/share/doc") / package / "copyright"
        self.reference = f"pkg:deb/debian/{self.source}@{self.version}?arch=source"

    def entry(self):
        licence = LICENCES[self.source]
        one = {"license": {"id": licence}} if " " not in licence else {"expression": licence}
        return {"type": "library", "bom-ref": self.reference, "name": self.source, "version": self.version,
                "licenses": [one], "purl": self.reference}


def linked_statically(folder, file):
    command = run("ninja", "-C", folder, "-t", "commands", "-s", file).strip().splitlines()[-1]
    packages = []
    for path in re.findall(r"\S+\.a\b", command):
        name = pathlib.Path(path).name.removesuffix(".a")
        if name.startswith("libtavrix") or path.startswith("lib") and "/" not in path or not path.startswith("/"):
            continue
        if name not in STATIC:
            raise SystemExit(f"{path} is linked into {file} and its package is not known: add it to STATIC")
        packages.append(STATIC[name])
    return packages + RUNTIME


def included(folder, base):
    """Packages of headers, by what ninja noted when it compiled the artefact's rooms."""
    packages, is_ours = set(), False
    for line in run("ninja", "-C", folder, "-t", "deps").splitlines():
        if line and not line[0].isspace():
            is_ours = not line.startswith(ALWAYS_ABSENT + ABSENT[base]) and (
                base != "tavrix-sandbox" or line.startswith(("sandbox/", "console/")))
        elif is_ours and (found := re.search(r"/include/(\w+)/", line)) and found.group(1) in HEADERS:
            packages.add(HEADERS[found.group(1)])
    if not packages:
        raise SystemExit(f"{folder}: ninja knows nothing of what {base} includes")
    return sorted(packages)


def linked_dynamically(file):
    # With what those need in turn: the package manager's business, and no part of ours.
    needed = re.findall(r"NEEDED.*\[(.*)\]", run("readelf", "-d", file))
    paths = dict(re.findall(r"(\S+) => (/\S+)", run("ldd", file)))
    return [run("dpkg-query", "-S", f"*/{name}").split(":")[0] for name in needed if name in paths]


def main():
    version, commit, seconds, sbom, licences, *artefacts = sys.argv[1:]
    components, dependencies, files = {}, [], []
    for artefact in artefacts:
        name, _, place = artefact.partition("=")
        kind, _, where = place.partition(":")
        base = pathlib.Path(name).name.removesuffix(".exe")
        packages = linked_statically(*where.split(":")) if kind == "windows" else linked_dynamically(where)
        found = {}
        folder = where.partition(":")[0] if kind == "windows" else pathlib.Path(where).parent.parent
        for package in packages + included(folder, base):
            component = Component(package)
            found[component.reference] = components.setdefault(component.source, component)
        files.append({"type": "library" if name.endswith(".dll") else "application", "bom-ref": name, "name": name,
                      "version": version})
        dependencies.append({"ref": name, "dependsOn": sorted(found)})
    setup = Component("nsis")
    components[setup.source] = setup
    dependencies.append({"ref": "product", "dependsOn": sorted([file["bom-ref"] for file in files] + [setup.reference])})
    ordered = [components[source] for source in sorted(components)]
    product = {"type": "application", "bom-ref": "product", "name": "Tavrix", "version": version,
               "licenses": [{"license": {"id": "MIT"}}]}
    time = datetime.datetime.fromtimestamp(int(seconds), datetime.timezone.utc).strftime("%Y-%m-%dT%H:%M:%SZ")
    document = {"bomFormat": "CycloneDX", "specVersion": "1.5", "version": 1,
                "serialNumber": f"urn:uuid:{uuid.uuid5(uuid.NAMESPACE_OID, commit)}",
                "metadata": {"timestamp": time, "component": product},
                "components": files + [component.entry() for component in ordered], "dependencies": dependencies}
    pathlib.Path(sbom).write_text(json.dumps(document, indent=1, ensure_ascii=False) + "\n")

    folder = pathlib.Path(licences)
    folder.mkdir(parents=True, exist_ok=True)
    page = ["PODZIĘKOWANIA", "", "Tavrix korzysta z tych programów i bibliotek. Pełne teksty licencji leżą obok, w plikach o ich nazwach.", ""]
    referred = set()
    for component in ordered:
        text = component.text.read_bytes()
        (folder / f"{component.source}.txt").write_bytes(text)
        referred |= {name.decode().rstrip(".") for name in re.findall(rb"/usr/share/common-licenses/([\w.+-]+)", text)}
        page.append(f"{component.source} {component.version}: {LICENCES[component.source]}")
    # Debian has the common texts once; whoever gets ours has no Debian.
    for name in sorted(referred):
        if not (COMMON / name).is_file():
            raise SystemExit(f"{COMMON / name}: a licence refers to it, and it is not there")
        (folder / f"{name}.txt").write_bytes((COMMON / name).read_bytes())
    page += ["", f"Teksty, na które tamte wskazują ({COMMON}/NAZWA), leżą obok: {', '.join(f'{name}.txt' for name in sorted(referred))}"]
    page += ["", "Kontury liter podpisu w PDF: czcionka DejaVu Sans (dejavu.txt)", "", ACKNOWLEDGEMENT, ""]
    (folder / "PODZIEKOWANIA.txt").write_text("\n".join(page))


if __name__ == "__main__":
    main()
