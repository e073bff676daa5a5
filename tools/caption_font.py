#!/usr/bin/env python3
"""caption_font.py HB-SUBSET FONT.ttf OUT.cpp: the letters of a signature's box as C++.

The font's Latin letters, without hints and with no more tables than a PDF reader needs, compressed as the document will
carry them, and what the document says of each letter.
"""
import pathlib
import struct
import subprocess
import sys
import tempfile
import zlib

LETTERS = "20-7E,A0-17F,2010-2026,20AC"
SUPERFLUOUS = "GSUB,GPOS,GDEF,MATH,kern,name,post,gasp,FFTM"


def subset(tool, font):
    with tempfile.TemporaryDirectory() as folder:
        out = pathlib.Path(folder) / "subset.ttf"
        subprocess.run([tool, f"--font-file={font}", f"--output-file={out}", f"--unicodes={LETTERS}", "--no-hinting",
                        "--notdef-outline", f"--drop-tables+={SUPERFLUOUS}"], check=True)
        return out.read_bytes()


def tables_of(font):
    count = struct.unpack(">H", font[4:6])[0]
    found = {}
    for i in range(count):
        tag, _, offset, size = struct.unpack(">4sLLL", font[12 + 16 * i:28 + 16 * i])
        found[tag.decode()] = font[offset:offset + size]
    return found


def glyphs_by_character(cmap):
    """The segments of format 4 (OpenType, cmap); every letter here is in the basic plane."""
    for i in range(struct.unpack(">H", cmap[2:4])[0]):
        table = cmap[struct.unpack(">HHL", cmap[4 + 8 * i:12 + 8 * i])[2]:]
        if struct.unpack(">H", table[:2])[0] == 4:
            break
    else:
        sys.exit("caption_font.py: the font has no character map of format 4")
    count = struct.unpack(">H", table[6:8])[0] // 2
    ends, starts, deltas, ranges = (struct.unpack(f">{count}H", table[at:at + 2 * count])
                                    for at in (14, 16 + 2 * count, 16 + 4 * count, 16 + 6 * count))
    glyphs = {}
    for segment, (start, end, delta, offset) in enumerate(zip(starts, ends, deltas, ranges)):
        for character in range(start, min(end, 0xFFFE) + 1):
            glyph = character
            if offset:
                at = 16 + 6 * count + 2 * segment + offset + 2 * (character - start)
                glyph = struct.unpack(">H", table[at:at + 2])[0]
            glyphs[character] = (glyph + delta) % 0x10000
    return {character: glyph for character, glyph in sorted(glyphs.items()) if glyph}


def main():
    tool, source, out = sys.argv[1:]
    font = subset(tool, source)
    tables = tables_of(font)
    per_em = struct.unpack(">H", tables["head"][18:20])[0]
    thousandths = lambda units: round(units * 1000 / per_em)
    box = struct.unpack(">4h", tables["head"][36:44])
    ascent, descent = struct.unpack(">2h", tables["hhea"][4:8])
    with_advance = struct.unpack(">H", tables["hhea"][34:36])[0]
    glyph_count = struct.unpack(">H", tables["maxp"][4:6])[0]
    advance = lambda glyph: struct.unpack(">H", tables["hmtx"][4 * min(glyph, with_advance - 1):][:2])[0]

    glyphs = ",\n    ".join(f"{{{character}, {glyph}, {thousandths(advance(glyph))}}}"
                           for character, glyph in glyphs_by_character(tables["cmap"]).items())
    packed = zlib.compress(font, 9)
    data = "\n    ".join(", ".join(str(byte) for byte in packed[i:i + 24]) + "," for i in range(0, len(packed), 24))
    pathlib.Path(out).write_text(f"""// Written by tools/caption_font.py from {pathlib.Path(source).name}.
#include "pdfsign/caption_font.h"

namespace tavrix::pdfsign {{
namespace {{

constexpr CaptionGlyph caption_glyphs[] = {{
    {glyphs}}};

constexpr std::uint8_t packed_font[] = {{
    {data}}};

}}  // namespace

const CaptionFont& caption_font() {{
    static constexpr CaptionFont font = {{
        packed_font, {len(font)}, caption_glyphs, {glyph_count}, {thousandths(ascent)}, {thousandths(descent)},
        {{{", ".join(str(thousandths(edge)) for edge in box)}}}}};
    return font;
}}

}}  // namespace tavrix::pdfsign
""")


if __name__ == "__main__":
    main()
