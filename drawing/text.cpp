#include "drawing/text.h"

#include <algorithm>
#include <cmath>

#include "fonts/strokes.h"

namespace tavrix::drawing {

void add_text(Drawing& drawing, const fonts::Font& font, base::TextView text, const Line& line) {
    constexpr double half_turn_degrees = 180;
    const double angle = line.angle_degrees * std::acos(-1) / half_turn_degrees;
    const double cosine = std::cos(angle);
    const double sine = std::sin(angle);
    const double scale = line.em_twips / font.units_per_em;
    std::int32_t pen_x = 0;
    std::vector<PointTwips> polygon;
    for (const fonts::GlyphId id : fonts::shape(font, text)) {
        const fonts::Glyph& glyph = font.glyphs[id];
        for (const fonts::Contour& contour : glyph.contours) {
            polygon.clear();
            for (const fonts::Point point : contour) {
                const double x = (pen_x + point.x) * scale;
                const double y = (font.ascent - point.y) * scale;
                polygon.push_back({whole_twips(line.left_twips + x * cosine + y * sine),
                                   whole_twips(line.top_twips - x * sine + y * cosine)});
            }
            drawing.add(polygon);
        }
        pen_x += glyph.advance;
    }
    drawing.end_row();
}

void add_caption(Drawing& drawing, base::TextView text, std::int32_t em_twips) {
    const fonts::Font& font = fonts::caption_font();
    const std::int32_t width_units = fonts::width_of(font, text);
    if (width_units == 0) return;
    constexpr double widest_share = 0.94;
    const double widest = drawing.width_twips() * widest_share * font.units_per_em;
    const double em = std::min(static_cast<double>(em_twips), widest / width_units);
    const double units_to_twips = em / font.units_per_em;
    const double left = (drawing.width_twips() - width_units * units_to_twips) / 2;
    add_text(drawing, font, text, {left, static_cast<double>(drawing.height_twips()), em});
    const double line_twips = (font.ascent + font.descent) * units_to_twips;
    drawing.resize(drawing.width_twips(),
                   drawing.height_twips() + static_cast<std::int32_t>(std::ceil(line_twips)));
}

}  // namespace tavrix::drawing
