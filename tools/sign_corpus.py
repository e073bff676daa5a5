#!/usr/bin/env python3
"""sign_corpus.py TAVRIX PFX PIN FOLDER...: signs every PDF file that others made and lets their programs judge.

Run by hand; the folders are for example those of `apt-get source qpdf pdf.js`. A file that is signed must satisfy
pdfsig, mutool, qpdf and tests/pdfsign/structure.py as it did before; one that is not must leave nothing behind.
"""
import collections
import pathlib
import subprocess
import sys
import tempfile

from tree import ROOT


def run(*command):
    done = subprocess.run(command, capture_output=True, timeout=120, check=False)
    return done.returncode, (done.stdout + done.stderr).decode(errors="replace")


def faults_of(original, signed, folder):
    said = run("pdfsig", signed)[1]
    if "Signature is Valid" not in said or "Total document signed" not in said:
        yield "pdfsig"
    if "unchanged since signing" not in run("mutool", "sign", "-v", signed)[1]:
        yield "mutool"
    if run("qpdf", "--check", signed)[0] > run("qpdf", "--check", original)[0]:
        yield "qpdf"
    if pathlib.Path(signed).read_bytes().startswith(pathlib.Path(original).read_bytes()):
        if run("python3", ROOT / "tests/pdfsign/structure.py", original, signed)[0]:
            yield "structure"
    else:
        yield "(rewritten)"
    if left := [path.name for path in folder.iterdir() if path.name != "signed.pdf"]:
        yield f"left {left}"


def main():
    program, pfx, pin, *folders = sys.argv[1:]
    files = sorted(path for folder in folders for path in pathlib.Path(folder).rglob("*.pdf"))
    count = collections.Counter()
    for path in files:
        with tempfile.TemporaryDirectory() as made:
            folder = pathlib.Path(made)
            signed = folder / "signed.pdf"
            code, said = run(program, "sign-pdf", path, signed, "--pfx", pfx, "--pin", pin)
            count["files"] += 1
            if code == 0:
                found = list(faults_of(path, signed, folder))
                count["signed"] += 1
                count["accepted by all"] += not [fault for fault in found if fault != "(rewritten)"]
                count["rewritten first"] += "(rewritten)" in found
                if found:
                    print(f"{path.name}: {' '.join(found)}", flush=True)
            else:
                count["refused"] += 1
                if code != 1 or list(folder.iterdir()):
                    print(f"{path.name}: refused with {code}, left {list(folder.iterdir())}", flush=True)
                count["refused: " + said.strip().splitlines()[-1][:60] if said.strip() else "without a word"] += 1
    for what, number in count.most_common():
        print(f"{number:6} {what}")


if __name__ == "__main__":
    main()
