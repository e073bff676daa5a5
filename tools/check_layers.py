#!/usr/bin/env python3
"""Refuses an include or a platform #if on the wrong side of the tree.

LAYERS says what a folder may include besides itself; OUTSIDE says which folders may see which foreign headers. The
longest folder name that fits a file decides for it.
"""
import pathlib
import re
import sys

from tree import ROOT, files

FEATURES = ["ksef", "barcode", "barcode/surface", "mail", "mail/mime", "mail/outgoing", "mail/smtp", "pdfsign", "dialogs"]
ADAPTERS = ["ports/native", "ports/windows", "ports/portable"]

# The sandbox reads the published interface a second time, so it shares nothing with the product: a mistake must not be
# made twice. Its rooms, each with those it stands on.
SANDBOX = ["basics", "exchange", "store", "documents", "service", "pages", "http"]

LAYERS = {
    "base": [],
    "fonts": ["base"],
    "drawing": ["base", "fonts"],
    # A kit for Windows programs; knows nothing of the product.
    "windows": ["base"],
    "ports": ["base", "drawing"],
    "ports/portable": ["base", "ports", "drawing"],
    # Where no system draws text, a surface draws the outlines itself; where one does, a surface out of sight must know
    # how wide a module is.
    "ports/native": ["base", "ports", "ports/portable", "fonts", "drawing"],
    "ports/windows": ["base", "ports", "ports/portable", "windows", "fonts", "drawing"],
    **{feature: ["base", "ports"] for feature in FEATURES},
    # A chart is a drawing.
    "dialogs": ["base", "ports", "drawing"],
    # Any message as it is; its classes stand on it.
    "mail/mime": ["base", "ports"],
    # A message as it goes out; the dialogue that hands it to a server.
    "mail/smtp": ["base", "ports", "mail/outgoing"],
    "mail": ["base", "ports", "mail/mime", "mail/outgoing", "mail/smtp"],
    # A symbol's bars are glyphs; encoders know no host.
    "barcode": ["base", "fonts", "drawing"],
    "barcode/surface": ["base", "ports", "fonts", "drawing", "barcode"],
    "frame": ["base", "ports", *FEATURES],
    "com": ["base", "windows"],
    "com/forms": ["base", "drawing", "ports", *FEATURES, "frame", "windows", "com"],
    "com/classes": ["base", "ports", *FEATURES, "frame", "windows", "ports/windows", "ports/portable", "com", "com/forms"],
    # Runs while the library is built.
    "com/describe": ["base", "windows", "com", "com/classes"],
    # What programs share with the system that started them; knows nothing of the product.
    "console": [],
    "cli": ["base", "ports", *FEATURES, "frame", "fonts", "drawing", "console", "ports/native", "ports/portable"],
    "cli/windows": ["base", "ports", "cli", "windows", "ports/windows"],
    # What a development machine lacks, on the product's own plumbing; never part of the product.
    "stand_ins": ["base", "ports", "windows", "com", "ports/windows", "ports/portable"],
    "stand_ins/cdo": ["base", "ports", "windows", "com", "ports/windows", "ports/portable", "mail"],
    "sandbox": ["console", *(f"sandbox/{room}" for room in SANDBOX)],
    **{f"sandbox/{room}": [f"sandbox/{below}" for below in SANDBOX[:place]] for place, room in enumerate(SANDBOX)},
}

# Foreign headers that would tie a folder to one platform or one library. Tests, benchmarks and fuzzers may use any.
OUTSIDE = [
    (r"windows\.h|windowsx\.h|win(sock2?|inet|http|crypt|spool|reg|nls|error)\.h|ws2tcpip\.h|ole2?\.h|oleauto\.h|olectl\.h|"
     r"oaidl\.h|ocidl\.h|objbase\.h|unknwn\.h|dispex\.h|comdef\.h|combaseapi\.h|shlobj.*\.h|shellapi\.h|msxml\d?\.h|"
     r"commdlg\.h|commctrl\.h|initguid\.h|tchar\.h|wtypes\.h|exdisp\.h|gdiplus.*\.h",
     ["windows", "ports/windows", "com", "stand_ins", "console/windows", "sandbox/store/windows", "sandbox/http/windows"],
     "Windows headers"),
    (r"unistd\.h|fcntl\.h|poll\.h|pwd\.h|dlfcn\.h|sys/.*\.h|arpa/.*\.h|netinet/.*\.h|netdb\.h",
     ["ports/native", "console", "sandbox/store/native"], "POSIX headers"),
    (r"curl/.*|libxslt/.*", ADAPTERS, "a library behind a port"),
    (r"libxml/.*", ADAPTERS + ["sandbox/basics", "sandbox/documents"], "a library behind a port"),
    (r"sqlite3\.h", ADAPTERS + ["sandbox/store"], "a library behind a port"),
    (r"openssl/.*", ADAPTERS + ["sandbox/basics", "sandbox/service"], "a library behind a port"),
    (r"qpdf/.*", ["pdfsign"], "a library of one feature"),
    (r"archive(_entry)?\.h", ["sandbox/documents"], "a library behind a reader"),
    (r"boost/.*", ["sandbox/http"], "a library of the applications"),
    (r"httplib\.h", [], "a library of the tests"),
    (r"spdlog/.*|CLI/.*", ["cli", "sandbox"], "a library of the applications"),
]

PLATFORM = re.compile(r"\b(_WIN32|_WIN64|WIN32|__MINGW\w*|_MSC_VER|__CYGWIN__|__linux__|__unix__|__APPLE__|__GNUC__|"
                      r"SO_EXCLUSIVEADDRUSE|SIG[A-Z]{3,})\b")
MAY_ASK_PLATFORM = ["ports", "windows", "com", "tests/ports", "tests/com", "tools"]
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]')
CONDITION = re.compile(r"^\s*#\s*(?:if|ifdef|ifndef|elif)\b(.*)")


def folder_of(path, folders):
    """The longest of the folders that holds the path, None when none does."""
    fitting = [folder for folder in folders if f"{path}".startswith(folder + "/")]
    return max(fitting, key=len, default=None)


def target_of(path, name):
    """The included file of this tree, None for a foreign header."""
    for candidate in (path.parent / name, pathlib.PurePosixPath(name)):
        if (ROOT / candidate).is_file():
            return pathlib.PurePosixPath((ROOT / candidate).resolve().relative_to(ROOT))
    # A header that is not written yet is judged by its name.
    return pathlib.PurePosixPath(name) if folder_of(name, LAYERS) else None


def is_inside(path, folders):
    return any(f"{path}".startswith(folder + "/") for folder in folders)


def include_fault(path, layer, name):
    target = target_of(path, name)
    if target is None:
        if layer:
            for pattern, allowed, what in OUTSIDE:
                if re.fullmatch(pattern, name) and not is_inside(path, allowed):
                    return f"{what} ({name}) do not belong in {layer}/"
        return None
    wanted = folder_of(target, LAYERS)
    if layer and wanted and wanted != layer and wanted not in LAYERS[layer]:
        return f"{layer}/ may not include {wanted}/ ({name})"
    if layer and is_inside(target, ["tests", "bench", "fuzz"]):
        return f"{layer}/ may not include what only tests need ({name})"
    return None


def faults_of(path):
    layer = folder_of(path, LAYERS)
    for number, line in enumerate((ROOT / path).read_text(errors="replace").splitlines(), 1):
        if found := INCLUDE.match(line):
            if fault := include_fault(path, layer, found.group(2)):
                yield f"{path}:{number}: {fault}"
        elif (found := CONDITION.match(line)) and PLATFORM.search(found.group(1)):
            if not is_inside(path, MAY_ASK_PLATFORM):
                yield f"{path}:{number}: a platform #if belongs in ports/ or com/; CMake picks the file elsewhere"


def main():
    paths = files(".h", ".hpp", ".cpp", ".inc")
    faults = [fault for path in paths for fault in faults_of(path)]
    print("\n".join(faults) or f"{len(paths)} files include only what their layer may")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
