#!/usr/bin/env python3
"""Turns a Windows bitmap of 32 bits per pixel, rows from top to bottom, into a PNG without alpha.

Usage: bitmap_to_png.py FROM.bmp TO.png
"""
import struct
import sys
import zlib


def chunk(kind, content):
    return struct.pack(">I", len(content)) + kind + content + struct.pack(">I", zlib.crc32(kind + content))


def png(bitmap):
    offset, = struct.unpack_from("<I", bitmap, 10)
    width, height, _, bits = struct.unpack_from("<iiHH", bitmap, 18)
    if bits != 32 or height >= 0:
        raise SystemExit("only bitmaps of 32 bits whose first row is the top one")
    rows = bytearray()
    for y in range(-height):
        row = bitmap[offset + y * width * 4:offset + (y + 1) * width * 4]
        pixels = bytearray(3 * width)
        pixels[0::3], pixels[1::3], pixels[2::3] = row[2::4], row[1::4], row[0::4]
        # Filter 0: the windows' large even surfaces compress well as they are.
        rows += b"\0" + pixels
    header = struct.pack(">IIBBBBB", width, -height, 8, 2, 0, 0, 0)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(bytes(rows), 9))
            + chunk(b"IEND", b""))


def main():
    source, target = sys.argv[1:]
    with open(source, "rb") as file:
        content = png(file.read())
    with open(target, "wb") as file:
        file.write(content)


if __name__ == "__main__":
    main()
