#!/usr/bin/env python3
"""structure.py ORIGINAL SIGNED [FOLDER]: what a strict reader sees in a signed file and forgiving ones do not.

Prints what is wrong, nothing when all is well. The original's bytes come first, the ByteRange leaves out exactly the
signature, the new cross-reference section is of the old one's kind, its entries are 20 bytes long and lead to the
objects they name. What was signed goes to `content` in the folder, the signature to `signature`.
"""
import re
import sys


def last_section(data):
    places = re.findall(rb"startxref\s+(\d+)", data[-1054:])
    if not places:
        return None, None
    at = int(places[-1])
    return at, "table" if data[at:at + 20].lstrip().startswith(b"xref") else "stream"


def table_entries(data, at):
    """(number, generation, offset) of each object in use; a fault as a text."""
    at = re.compile(rb"xref\s+").match(data, at).end()
    while head := re.compile(rb"(\d+) (\d+)[ ]?\r?\n").match(data, at):
        at = head.end()
        for number in range(int(head[1]), int(head[1]) + int(head[2])):
            entry = data[at:at + 20]
            if not re.fullmatch(rb"\d{10} \d{5} [nf](\r\n| \r| \n)", entry):
                yield f"entry of object {number} is {entry!r}"
                return
            if entry[17:18] == b"n":
                yield number, int(entry[11:16]), int(entry[:10])
            at += 20


def stream_entries(data, at):
    dictionary = data[at:data.index(b"stream\n", at)]
    if b"/W [ 1 8 2 ]" not in dictionary or b"/Filter" in dictionary:
        yield "a cross-reference stream that was not expected"
        return
    numbers = [int(n) for n in re.search(rb"/Index \[([^]]*)\]", dictionary)[1].split()]
    rows = data.index(b"stream\n", at) + 7
    for first, count in zip(numbers[::2], numbers[1::2]):
        for number in range(first, first + count):
            yield number, int.from_bytes(data[rows + 9:rows + 11], "big"), int.from_bytes(data[rows + 1:rows + 9], "big")
            rows += 11


def faults(original, signed):
    if not signed.startswith(original):
        yield "the original is not the beginning"
        return
    update = signed[len(original):]
    ranges = re.findall(rb"/ByteRange \[ (\d+) (\d+) (\d+) (\d+) \]", update)
    if len(ranges) != 1:
        yield f"{len(ranges)} ByteRanges"
        return
    begin, size, second, second_size = map(int, ranges[0])
    gap = signed[size:second]
    if begin != 0 or second + second_size != len(signed):
        yield f"ByteRange {ranges[0]} does not go from 0 to {len(signed)}"
    if not re.fullmatch(rb"<[0-9a-f]+>", gap) or not signed[:size].endswith(b"/Contents "):
        yield "the gap is not the signature"
    old_at, old_kind = last_section(original)
    at, kind = last_section(signed)
    if old_kind != kind:
        yield f"a {kind} follows a {old_kind}"
        return
    section = signed[at:]
    if int(re.search(rb"/Prev (\d+)", section)[1]) != old_at:
        yield "/Prev does not lead to the old section"
    if kind == "table" and b"/XRefStm" in section:
        yield "the old hybrid section is repeated"
    for entry in (table_entries if kind == "table" else stream_entries)(signed, at):
        if isinstance(entry, str):
            yield entry
            continue
        number, generation, offset = entry
        if not signed.startswith(b"%d %d obj\n" % (number, generation), offset) or offset < len(original):
            yield f"nothing of object {number} at {offset}"
    if not signed.endswith(b"%%EOF\n"):
        yield "bytes behind the end"


if __name__ == "__main__":
    first, second = (open(name, "rb").read() for name in sys.argv[1:3])
    found = list(faults(first, second))
    if len(sys.argv) > 3 and not found:
        a, b = map(int, re.findall(rb"/ByteRange \[ 0 (\d+) (\d+)", second)[-1])
        open(f"{sys.argv[3]}/content", "wb").write(second[:a] + second[b:])
        open(f"{sys.argv[3]}/signature", "wb").write(bytes.fromhex(second[a + 1:b - 1].decode()))
    print("\n".join(found), end="")
    sys.exit(1 if found else 0)
