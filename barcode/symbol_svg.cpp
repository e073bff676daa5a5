#include "barcode/symbol_svg.h"

#include <cmath>

#include "fonts/barcode_fonts.h"

namespace tavrix::barcode {
namespace {

/// Relative steps from point to point.
class StepWriter {
  public:
    explicit StepWriter(fonts::Point from) : at_(from) {}

    void step(char letter, fonts::Point to) {
        path_ += letter;
        path_ += std::to_string(to.x - at_.x) + ' ' + std::to_string(to.y - at_.y);
        at_ = to;
    }
    // A closed outline ends where it began.
    void close(fonts::Point begin) {
        path_ += 'z';
        at_ = begin;
    }
    std::string finish() { return std::move(path_); }

  private:
    fonts::Point at_;
    std::string path_;
};

/// From the glyph's left end on the top of the line to its right end there.
std::string path_of(const fonts::Font& font, const fonts::Glyph& glyph, std::int32_t module_twips) {
    const auto place = [&](fonts::Point point) {
        const double scale = static_cast<double>(module_twips) / fonts::module_units;
        return fonts::Point{
            static_cast<std::int32_t>(std::lround(point.x * scale)),
            static_cast<std::int32_t>(std::lround((font.ascent - point.y) * scale))};
    };
    StepWriter writer({0, 0});
    for (const fonts::Contour& contour : glyph.contours) {
        const fonts::Point begin = place(contour.front());
        char letter = 'm';
        for (const fonts::Point point : contour) {
            writer.step(letter, place(point));
            letter = letter == 'm' ? 'l' : ' ';
        }
        writer.close(begin);
    }
    writer.step('m', place({glyph.advance, font.ascent}));
    return writer.finish();
}

std::string points(std::int32_t twips) {
    constexpr std::int32_t twips_per_point = 20;
    const std::int32_t hundredths = twips % twips_per_point * 5;
    return std::to_string(twips / twips_per_point) + (hundredths < 10 ? ".0" : ".") +
           std::to_string(hundredths);
}

std::string css_colour(ports::Colour colour) {
    std::string text = "#";
    for (const int shift : {4, 0, 12, 8, 20, 16})
        text += "0123456789abcdef"[(colour >> shift) & 15];
    return text;
}

}  // namespace

SymbolSvg::SymbolSvg(const Symbology& symbology, std::int32_t module_twips, ports::Colour colour)
    : font_(symbology.font()), symbology_(symbology), module_twips_(module_twips), colour_(colour) {
    for (const fonts::Glyph& glyph : font_.glyphs) {
        paths_.push_back(path_of(font_, glyph, module_twips));
    }
}

std::string SymbolSvg::write(base::TextView symbol) const {
    const SymbolFrame frame = symbol_frame(symbology_, symbol, module_twips_);
    const std::string width = std::to_string(frame.width_twips);
    const std::string height = std::to_string(frame.height_twips);
    const std::vector<fonts::GlyphId> glyphs = fonts::shape(font_, symbol);
    std::size_t size = 400;
    for (const fonts::GlyphId glyph : glyphs) size += paths_[glyph].size();
    std::string svg;
    svg.reserve(size);
    svg.append("<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"")
        .append(points(frame.width_twips))
        .append("pt\" height=\"")
        .append(points(frame.height_twips))
        .append("pt\" viewBox=\"0 0 ")
        .append(width)
        .append(" ")
        .append(height)
        .append("\"><path fill=\"#fff\" d=\"M0 0H")
        .append(width)
        .append("V")
        .append(height)
        .append("H0z\"/><path shape-rendering=\"crispEdges\" fill=\"")
        .append(css_colour(colour_))
        .append("\" d=\"M")
        .append(std::to_string(frame.left_twips))
        .append(" ")
        .append(std::to_string(frame.top_twips));
    for (const fonts::GlyphId glyph : glyphs) svg.append(paths_[glyph]);
    svg.append("\"/></svg>\n");
    return svg;
}

}  // namespace tavrix::barcode
