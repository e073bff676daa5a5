#!/usr/bin/env python3
"""Refuses a C++ file that clang-format would change; --fix changes it.

Files once found good are remembered by content in the file that --cache names, so a run looks only at what changed.
"""
import argparse
import hashlib
import pathlib
import subprocess
import sys

from tree import ROOT, files


def digest(path, style):
    return hashlib.sha256(style + (ROOT / path).read_bytes()).hexdigest()


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--fix", action="store_true")
    parser.add_argument("--cache", type=pathlib.Path)
    options = parser.parse_args()

    # Another version lays out differently; its own name is part of what is remembered.
    version = subprocess.run(["clang-format", "--version"], check=True, capture_output=True).stdout
    style = version + (ROOT / ".clang-format").read_bytes()
    good = set(options.cache.read_text().split()) if options.cache and options.cache.exists() else set()
    known = {path: digest(path, style) for path in files(".h", ".hpp", ".cpp")}
    todo = [path for path, mark in known.items() if mark not in good]

    faults = []
    for path in todo:
        if options.fix:
            subprocess.run(["clang-format", "-i", path], cwd=ROOT, check=True)
        elif subprocess.run(["clang-format", "--dry-run", "--Werror", path], cwd=ROOT, capture_output=True).returncode:
            faults.append(path)
    if options.cache and not options.fix:
        # What other checkouts found good stays, up to a size that takes no time to read.
        fresh = {mark for path, mark in known.items() if path not in faults}
        kept = fresh | (good if len(good) < 5000 else set())
        options.cache.parent.mkdir(parents=True, exist_ok=True)
        options.cache.write_text("\n".join(sorted(kept)) + "\n")
    for path in faults:
        print(f"{path}: not laid out as .clang-format says; python3 tools/check_format.py --fix")
    print(f"{len(known)} files, {len(todo)} looked at, {len(faults)} to be laid out anew")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
