#!/usr/bin/env python3
"""Lists what a setup program installs: file_list.py STAGE FONTS > files.nsh

Writes STAGE/files.txt, by which the next version knows the files of this one, and prints macros for setup.nsi that go
through files, folders and fonts. What is for 64-bit Windows alone (x64, bin) is put in the list with the rest: on a
32-bit system it lies there unused.
"""
import pathlib
import struct
import sys


def font_name(path):
    """The full name in a TrueType font's naming table."""
    data = path.read_bytes()
    count, = struct.unpack_from(">H", data, 4)
    for table in range(count):
        tag, _, start, _ = struct.unpack_from(">4sIII", data, 12 + 16 * table)
        if tag != b"name":
            continue
        _, records, strings = struct.unpack_from(">HHH", data, start)
        for record in range(records):
            platform, _, _, name, length, offset = struct.unpack_from(">6H", data, start + 6 + 12 * record)
            if (platform, name) == (3, 4):
                begin = start + strings + offset
                return data[begin:begin + length].decode("utf-16-be")
    raise SystemExit(f"{path}: no full name found")


def macro(name, arguments, lines):
    return "\n".join([f"!macro {name} {arguments}", *(f"  !insertmacro ${{ACTION}} {line}" for line in lines), "!macroend"])


def main():
    stage, fonts = map(pathlib.Path, sys.argv[1:])
    (stage / "files.txt").touch()
    paths = sorted(path.relative_to(stage) for path in stage.rglob("*") if path.is_file())
    windows = ["\\".join(path.parts) for path in paths]
    # UTF-16 is what the setup program reads without knowing the machine's code page.
    (stage / "files.txt").write_bytes("\r\n".join([*windows, ""]).encode("utf-16-le"))
    folders = sorted({"\\".join(path.parts[:depth]) for path in paths for depth in range(1, len(path.parts))})
    size = sum((stage / path).stat().st_size for path in paths)
    print(f"!define NEEDED_KB {size // 1024 + 1024}")
    print(macro("EachFile", "ACTION", [f'"{path}" "{name}"' for path, name in zip(paths, windows)]))
    print(macro("EachFolderDown", "ACTION", [f'"{folder}"' for folder in folders]))
    print(macro("EachFolder", "ACTION", [f'"{folder}"' for folder in reversed(folders)]))
    print(macro("EachFont", "ACTION UN", [f'"${{UN}}" "{font.name}" "{font_name(font)}"'
                                          for font in sorted(fonts.glob("*.ttf"))]))


if __name__ == "__main__":
    main()
