#!/usr/bin/env python3
"""Refuses an artefact without what makes a fault in it harder to exploit, or that remembers a folder of its build.

check_hardening.py FILE...: programs and DLLs of Windows, native programs. Setup programs are no business of this one:
NSIS' own start-up code, which has no relocations, is Debian's.
"""
import pathlib
import re
import struct
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
HIGH_ENTROPY, DYNAMIC_BASE, NX = 0x20, 0x40, 0x100
WRITE, EXECUTE = 0x80000000, 0x20000000
# Folders that only a build machine has.
OWN_FOLDERS = [f"{ROOT}", f"{pathlib.Path.home()}/.cache", "/tmp/tmp."]


def windows_faults(data):
    header, = struct.unpack_from("<I", data, 0x3C)
    sections, = struct.unpack_from("<H", data, header + 6)
    optional_size, = struct.unpack_from("<H", data, header + 20)
    optional = header + 24
    wide = struct.unpack_from("<H", data, optional)[0] == 0x20B
    flags, = struct.unpack_from("<H", data, optional + 70)
    wanted = {"DYNAMICBASE": DYNAMIC_BASE, "NXCOMPAT": NX} | ({"HIGHENTROPYVA": HIGH_ENTROPY} if wide else {})
    faults = [f"lacks {name}" for name, bit in wanted.items() if not flags & bit]
    # The sixth of the data directories; without it the loader cannot move the image, whatever the flags say.
    directories = optional + (112 if wide else 96)
    if struct.unpack_from("<I", data, directories + 5 * 8 + 4)[0] == 0:
        faults.append("has no relocations")
    for number in range(sections):
        start = optional + optional_size + 40 * number
        rights, = struct.unpack_from("<I", data, start + 36)
        if rights & WRITE and rights & EXECUTE:
            faults.append(f"section {data[start:start + 8].rstrip(bytes(1)).decode()} is writable and executable")
    return faults


def native_faults(path):
    text = subprocess.run(["readelf", "-W", "-h", "-l", "-d", "--dyn-syms", path], check=True, capture_output=True,
                          text=True).stdout
    wanted = {"a position independent program (PIE)": r"Type:\s+DYN .*\n[\s\S]*FLAGS_1.*PIE", "RELRO": r"GNU_RELRO",
              "BIND_NOW": r"BIND_NOW|FLAGS_1.*NOW", "a stack that is not executable": r"GNU_STACK.* RW ",
              "a stack protector": r"__stack_chk_fail", "FORTIFY": r"_chk@"}
    faults = [f"lacks {name}" for name, pattern in wanted.items() if not re.search(pattern, text)]
    if re.search(r"\((RPATH|RUNPATH)\)", text):
        faults.append("looks for libraries in a folder of the build (RPATH)")
    if re.search(r"LOAD .* RWE ", text):
        faults.append("has a segment that is writable and executable")
    return faults


def main():
    faults = []
    for name in sys.argv[1:]:
        path = pathlib.Path(name)
        data = path.read_bytes()
        found = windows_faults(data) if data.startswith(b"MZ") else native_faults(path)
        found += [f"holds the path {folder}" for folder in OWN_FOLDERS if folder.encode() in data]
        faults += [f"{path.name}: {fault}" for fault in found]
    print("\n".join(faults) or f"{len(sys.argv) - 1} files are hardened")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
