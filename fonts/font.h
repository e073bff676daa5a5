#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <vector>

#include "base/text.h"

namespace tavrix::fonts {

/// A point in font units, y axis up, baseline at 0.
struct Point {
    std::int32_t x;
    std::int32_t y;
};

/// A simple polygon, clockwise as TrueType wants the dark on the right. A ring is one contour with
/// a seam, so that no contour is ever a hole.
using Contour = std::vector<Point>;

struct Glyph {
    std::int32_t advance = 0;
    std::vector<Contour> contours;
};

using GlyphId = std::uint16_t;

/// An outline font, all of it: what is written into the font file is what the native doors draw.
struct Font {
    base::Text family;
    std::int32_t units_per_em = 0;
    std::int32_t ascent = 0;    ///< from the baseline up to the top of the line
    std::int32_t descent = 0;   ///< from the baseline down to the bottom of the line
    std::vector<Glyph> glyphs;  ///< the first one stands for characters that the font lacks
    std::map<char16_t, GlyphId> characters;
    /// The same for the first 256 characters, which nearly every symbol is made of.
    std::array<GlyphId, 256> first_characters{};
    /// Behind one of the triggers a glyph gives way to its alternate.
    std::vector<GlyphId> triggers;
    std::map<GlyphId, GlyphId> alternates;

    /// Adds a glyph for each of the `codes`; the glyph's number.
    GlyphId add(Glyph glyph, base::TextView codes);
    GlyphId glyph_of(char16_t character) const noexcept;
};

/// The glyphs of a text in the order of printing, alternates chosen.
std::vector<GlyphId> shape(const Font& font, base::TextView text);

/// The width of a text in font units.
std::int32_t width_of(const Font& font, base::TextView text);

}  // namespace tavrix::fonts
