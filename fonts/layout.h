#pragma once

#include "fonts/font.h"

namespace tavrix::fonts {

/// Where and how large a line of text is laid: its left end, the top of the line, and the size of
/// the em, in whatever unit the caller draws in, y axis down.
struct Line {
    double left;
    double top;
    double em;
};

/// Calls `add(points)` for each contour of `text`; a point has x and y as doubles.
template <typename Add>
void lay_out(const Font& font, base::TextView text, const Line& line, Add&& add) {
    struct Placed {
        double x;
        double y;
    };
    const double scale = line.em / font.units_per_em;
    std::int32_t pen_x = 0;
    std::vector<Placed> points;
    for (const GlyphId id : shape(font, text)) {
        const Glyph& glyph = font.glyphs[id];
        for (const Contour& contour : glyph.contours) {
            points.clear();
            for (const Point point : contour) {
                points.push_back({line.left + (pen_x + point.x) * scale,
                                  line.top + (font.ascent - point.y) * scale});
            }
            add(points);
        }
        pen_x += glyph.advance;
    }
}

}  // namespace tavrix::fonts
