#pragma once

#include "fonts/font.h"

namespace tavrix::fonts {

/// A letter as strokes of a pen on a grid: capitals and digits are 18 high, small letters 12, lines
/// below go down to -6.
struct Letter {
    char16_t character;
    std::int32_t width;
    /// "L x y x y ..." is a broken line, "S x y ..." a smooth curve from the first to the last
    /// point drawn towards those between, "O x y ..." a closed one; strokes follow one another. The
    /// curves are quadratic B-splines.
    const char* strokes;
};

inline constexpr std::int32_t capital_height = 18;

/// The letters, digits and signs of ASCII, and the Polish letters composed from them.
const std::vector<Letter>& letters();

/// Places a letter's strokes: grid units times `scale_x` or `scale_y`, moved by `x` and `y`, drawn
/// with a pen of the diameter `pen`, all in font units.
struct Placement {
    double x;
    double y;
    double scale_x;
    double scale_y;
    double pen;
};
void add_strokes(Glyph& glyph, base::TextView character, const Placement& placement);

/// The proportional font for captions; stands in natively for the hosts' "Arial CE".
const Font& caption_font();

}  // namespace tavrix::fonts
