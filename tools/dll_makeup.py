#!/usr/bin/env python3
"""Says what Tavrix.dll is made of: dll_makeup.py BUILD_FOLDER.

Links the DLL once more with a map (into a scratch file) and adds up the bytes that each library's objects brought.
"""
import collections
import pathlib
import re
import subprocess
import sys
import tempfile

# The first name that occurs in an object's path says whose it is; what none fits is the compiler's run-time.
OWNERS = [("openssl", ("libcrypto", "libssl")), ("curl", ("libcurl",)), ("zlib", ("libz",)),
          ("QR generator", ("qrcodegen",)), ("resources", (".rc.",)), ("Tavrix", ("tavrix", "CMakeFiles"))]
# A section of an input file: its name alone on a line when it is long, then address, size, object.
INPUT = re.compile(r"^ (\.\S+)\s*(?:\n\s+)?0x[0-9a-f]+\s+0x([0-9a-f]+)\s+(\S.*)$", re.MULTILINE)
KEPT = re.compile(r"^\.(text|rdata|data|rsrc|eh_frame|idata|edata|reloc)")


def link_command(folder):
    """The command that links the DLL, as ninja would run it."""
    commands = subprocess.run(["ninja", "-C", folder, "-t", "commands", "-s", "bin/Tavrix.dll"], check=True,
                              capture_output=True, text=True).stdout
    return commands.strip().splitlines()[-1]


def owner_of(path):
    for owner, names in OWNERS:
        if any(name in path for name in names):
            return owner
    return "compiler's run-time and imports"


def main():
    folder = pathlib.Path(sys.argv[1])
    dll = folder / "bin" / "Tavrix.dll"
    with tempfile.TemporaryDirectory() as scratch:
        map_file = pathlib.Path(scratch) / "map"
        command = link_command(folder).replace("-o bin/Tavrix.dll", f"-o {scratch}/x.dll -Wl,-Map,{map_file}")
        subprocess.run(command, shell=True, check=True, cwd=folder, capture_output=True)
        text = map_file.read_text(errors="replace")
    text = text[text.index("Linker script and memory map"):]
    sizes = collections.Counter()
    for section, size, path in INPUT.findall(text):
        if KEPT.match(section):
            sizes[owner_of(path)] += int(size, 16)
    total = dll.stat().st_size
    parts = ", ".join(f"{owner} {size / 2**20:.2f}" for owner, size in sizes.most_common())
    print(f"Tavrix.dll: {total / 2**20:.2f} MiB stripped (aim: 8 or less); of its sections {parts} MiB")


if __name__ == "__main__":
    main()
