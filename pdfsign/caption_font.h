#pragma once

#include <array>

#include "base/text.h"

namespace tavrix::pdfsign {

struct CaptionGlyph {
    char16_t character;
    std::uint16_t glyph;
    /// In thousandths of the font's size, as all lengths here.
    int advance;
};

/// The font that every signed document carries along: a part of DejaVu Sans with the letters of the
/// Latin alphabets, whose licence allows embedding and passing on under another name.
struct CaptionFont {
    /// TrueType, compressed (RFC 1950), and its size without that.
    base::ByteView packed;
    std::size_t size;
    /// Sorted by character.
    std::span<const CaptionGlyph> glyphs;
    int glyph_count;
    int ascent;
    int descent;
    std::array<int, 4> box;
};

/// Made during the build (tools/caption_font.py).
const CaptionFont& caption_font();

}  // namespace tavrix::pdfsign
