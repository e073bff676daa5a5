#include "drawing/text_svg.h"

#include <cmath>

#include "drawing/svg_writer.h"

namespace tavrix::drawing {
namespace {

/// From the glyph's left end on the top of the line to its right end there.
std::string path_of(const fonts::Font& font, const fonts::Glyph& glyph, double em_twips) {
    const auto place = [&](fonts::Point point) {
        const double scale = em_twips / font.units_per_em;
        return PointTwips{static_cast<std::int32_t>(std::lround(point.x * scale)),
                          static_cast<std::int32_t>(std::lround((font.ascent - point.y) * scale))};
    };
    PathWriter writer;
    std::vector<PointTwips> polygon;
    for (const fonts::Contour& contour : glyph.contours) {
        polygon.clear();
        for (const fonts::Point point : contour) polygon.push_back(place(point));
        writer.add(polygon);
    }
    writer.move_to(place({glyph.advance, font.ascent}));
    return writer.finish();
}

}  // namespace

TextSvg::TextSvg(const fonts::Font& font, double em_twips, Colour colour)
    : font_(font), colour_(colour) {
    for (const fonts::Glyph& glyph : font_.glyphs) {
        paths_.push_back(path_of(font_, glyph, em_twips));
    }
}

std::string TextSvg::write(base::TextView text, const TextFrame& frame) const {
    const std::vector<fonts::GlyphId> glyphs = fonts::shape(font_, text);
    std::size_t size = 0;
    for (const fonts::GlyphId glyph : glyphs) size += paths_[glyph].size();
    std::string svg = svg_head(frame.width_twips, frame.height_twips, colour_, size);
    svg.append("M")
        .append(std::to_string(frame.left_twips))
        .append(" ")
        .append(std::to_string(frame.top_twips));
    for (const fonts::GlyphId glyph : glyphs) svg.append(paths_[glyph]);
    return svg.append(svg_tail);
}

}  // namespace tavrix::drawing
