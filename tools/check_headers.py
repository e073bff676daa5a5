#!/usr/bin/env python3
"""Compiles every header on its own, so that none leans on what its users happen to include before it. A header that its
own source includes before anything else is compiled so by the builds that take each file by itself: 32-bit Windows, ./dev tidy.

Ninja does the work in build/<door>/headers, so a second run compiles only what changed. The flags are those of the
door's own compile commands. Usage: check_headers.py native|win32|win64 [-j N]
"""
import argparse
import json
import re
import shlex
import subprocess
import sys

from tree import ROOT, files

# What only one of the doors can compile; everything else is compiled natively alone.
WINDOWS_ONLY = ("windows/", "com/", "ports/windows/", "tests/com/", "bench/com/", "stand_ins/",
                "tools/tavrix_dialogs/")


def wanted(path, door):
    return f"{path}".startswith(WINDOWS_ONLY) == door.startswith("win")


def is_first_in_its_source(header):
    source = header.with_suffix(".cpp")
    if not (ROOT / source).exists():
        return False
    first = re.search(r'^\s*#\s*include\s*(\S+)', (ROOT / source).read_text(), re.MULTILINE)
    return first is not None and first.group(1) == f'"{header}"'


def compiler_and_flags(commands):
    """The compiler, and every include and define that any file of the door is compiled with."""
    compiler, flags = None, []
    for entry in commands:
        # Resource files have their own compiler; several files compiled as one end in .cxx.
        if not entry["file"].endswith((".cpp", ".cxx")):
            continue
        words = shlex.split(entry["command"])
        words = words[1:] if words[0].endswith("ccache") else words
        compiler = words[0]
        flags += [word for word in words if word.startswith(("-I", "-D", "-std="))]
        flags += [flag for word, after in zip(words, words[1:]) if word == "-isystem" for flag in (word, after)]
    pairs = iter(flags)
    together = [(flag, next(pairs)) if flag == "-isystem" else (flag,) for flag in pairs]
    return compiler, [word for group in dict.fromkeys(together) for word in group]


def write_ninja(build, headers, compiler, flags):
    line = shlex.join(flags).replace("$", "$$")
    text = [
        "builddir = .",
        "rule header",
        # A header with #pragma once is included from a line of its own; alone as the main file it would warn.
        f"  command = echo '#include \"$in\"' | {compiler} {line} -Wall -Wextra -fsyntax-only -MMD -MF $out.d -MT $out"
        " -x c++ - && touch $out",
        "  depfile = $out.d",
        "  deps = gcc",
        "  description = $in",
    ]
    for header in headers:
        text.append(f"build {str(header).replace('/', '+')}.ok: header {ROOT / header}")
    build.mkdir(parents=True, exist_ok=True)
    ninja = build / "build.ninja"
    content = "\n".join(text) + "\n"
    if not ninja.exists() or ninja.read_text() != content:
        ninja.write_text(content)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("door")
    parser.add_argument("-j", default="2")
    options = parser.parse_args()
    folder = ROOT / "build" / options.door
    commands = json.loads((folder / "compile_commands.json").read_text())
    headers = [
        path for path in files(".h", ".hpp") if wanted(path, options.door) and not is_first_in_its_source(path)
    ]
    if not headers:
        print("no headers for this door")
        return 0
    compiler, flags = compiler_and_flags(commands)
    write_ninja(folder / "headers", headers, compiler, flags)
    # Ninja goes on after a failure, so that one run names every header that does not compile.
    done = subprocess.run(["ninja", "-C", folder / "headers", "-k", "0", "-j", options.j])
    return 1 if done.returncode else 0


if __name__ == "__main__":
    sys.exit(main())
