#include "barcode/symbol_drawing.h"

#include <algorithm>
#include <cmath>

#include "fonts/strokes.h"

namespace tavrix::barcode {
namespace {

using ports::Drawing;
using ports::PointTwips;

PointTwips turn_once(PointTwips point, std::int32_t height) noexcept {
    return {height - point.y_twips, point.x_twips};
}

}  // namespace

void add_text(Drawing& drawing, const fonts::Font& font, base::TextView text,
              const fonts::Line& line) {
    std::vector<PointTwips> polygon;
    fonts::lay_out(font, text, line, [&](const auto& points) {
        polygon.clear();
        for (const auto& point : points) {
            polygon.push_back({static_cast<std::int32_t>(std::lround(point.x)),
                               static_cast<std::int32_t>(std::lround(point.y))});
        }
        drawing.add(polygon);
    });
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
    drawing.end_row();
    const double line_twips = (font.ascent + font.descent) * units_to_twips;
    drawing.resize(drawing.width_twips(),
                   drawing.height_twips() + static_cast<std::int32_t>(std::ceil(line_twips)));
}

Drawing turned(const Drawing& drawing, int quarter_turns) {
    const int turns = ((quarter_turns % 4) + 4) % 4;
    const bool on_its_side = turns % 2 == 1;
    Drawing result(on_its_side ? drawing.height_twips() : drawing.width_twips(),
                   on_its_side ? drawing.width_twips() : drawing.height_twips(), drawing.colour());
    std::vector<PointTwips> points;
    drawing.for_each_polygon([&](std::span<const PointTwips> polygon) {
        points.assign(polygon.begin(), polygon.end());
        std::int32_t height = drawing.height_twips();
        std::int32_t width = drawing.width_twips();
        for (int turn = 0; turn < turns; ++turn) {
            for (PointTwips& point : points) point = turn_once(point, height);
            std::swap(width, height);
        }
        result.add(points);
    });
    result.end_row();
    return result;
}

}  // namespace tavrix::barcode
