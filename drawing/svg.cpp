#include "drawing/svg.h"

#include <charconv>

#include "drawing/svg_writer.h"

namespace tavrix::drawing {
namespace {

// The longest decimal of 32 bits, with its sign, and a letter.
constexpr std::size_t longest_step = 13;

using Coordinate = std::int32_t PointTwips::*;

/// True when the sides are those of a rectangle, of which the first keeps `same`.
bool is_rectangle(std::span<const PointTwips> p, Coordinate same, Coordinate other) noexcept {
    return p.size() == 4 && p[0].*same == p[1].*same && p[1].*other == p[2].*other &&
           p[2].*same == p[3].*same && p[3].*other == p[0].*other;
}

std::string points(std::int32_t twips) {
    constexpr std::int32_t twips_per_point = 20;
    const std::int32_t hundredths = twips % twips_per_point * (100 / twips_per_point);
    return std::to_string(twips / twips_per_point) + (hundredths < 10 ? ".0" : ".") +
           std::to_string(hundredths);
}

std::string css_colour(Colour colour) {
    constexpr char digits[] = "0123456789abcdef";
    std::string text = "#";
    for (const int shift : {4, 0, 12, 8, 20, 16}) text += digits[(colour >> shift) & 0xF];
    return text;
}

}  // namespace

void PathWriter::make_room() {
    if (path_.size() - used_ < longest_step) path_.resize(path_.size() * 2 + longest_step);
}

void PathWriter::add(char letter, std::int32_t number) {
    make_room();
    path_[used_++] = letter;
    char* begin = path_.data() + used_;
    used_ +=
        static_cast<std::size_t>(std::to_chars(begin, begin + longest_step, number).ptr - begin);
}

void PathWriter::step(char letter, PointTwips to) {
    add(letter, to.x_twips - at_.x_twips);
    add(' ', to.y_twips - at_.y_twips);
    at_ = to;
}

void PathWriter::add(std::span<const PointTwips> polygon) {
    step('m', polygon[0]);
    const std::int32_t width = polygon[2].x_twips - polygon[0].x_twips;
    const std::int32_t height = polygon[2].y_twips - polygon[0].y_twips;
    if (is_rectangle(polygon, &PointTwips::y_twips, &PointTwips::x_twips)) {
        add('h', width);
        add('v', height);
        add('h', -width);
    } else if (is_rectangle(polygon, &PointTwips::x_twips, &PointTwips::y_twips)) {
        add('v', height);
        add('h', width);
        add('v', -height);
    } else {
        char letter = 'l';
        for (const PointTwips point : polygon.subspan(1)) {
            step(letter, point);
            letter = ' ';
        }
    }
    make_room();
    path_[used_++] = 'z';
    // A closed outline ends where it began.
    at_ = polygon[0];
}

std::string PathWriter::finish() {
    path_.resize(used_);
    return std::move(path_);
}

namespace {

/// The file up to its paper.
std::string paper_of(std::int32_t width_twips, std::int32_t height_twips, std::string_view paper,
                     std::size_t data_bytes) {
    const std::string width = std::to_string(width_twips);
    const std::string height = std::to_string(height_twips);
    std::string svg;
    constexpr std::size_t longest_frame = 400;
    svg.reserve(longest_frame + data_bytes);
    svg.append("<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"")
        .append(points(width_twips))
        .append("pt\" height=\"")
        .append(points(height_twips))
        .append("pt\" viewBox=\"0 0 ")
        .append(width)
        .append(" ")
        .append(height)
        .append("\"><path fill=\"")
        .append(paper)
        .append("\" d=\"M0 0H")
        .append(width)
        .append("V")
        .append(height)
        .append("H0z\"/>");
    return svg;
}

}  // namespace

std::string svg_head(std::int32_t width_twips, std::int32_t height_twips, Colour colour,
                     std::size_t data_bytes) {
    return paper_of(width_twips, height_twips, "#fff", data_bytes)
        // Crisp edges keep neighbouring modules from showing a seam.
        .append("<path shape-rendering=\"crispEdges\" fill=\"")
        .append(css_colour(colour))
        .append("\" d=\"");
}

std::string to_svg(const Drawing& drawing) {
    PathWriter path(drawing.points().size() * 8);
    drawing.for_each_polygon([&](std::span<const PointTwips> polygon) { path.add(polygon); });
    const std::string data = path.finish();
    return svg_head(drawing.width_twips(), drawing.height_twips(), drawing.colour(), data.size())
        .append("M0 0")
        .append(data)
        .append(svg_tail);
}

std::string to_svg(const Picture& picture) {
    std::string svg =
        paper_of(picture.width_twips, picture.height_twips, css_colour(picture.paper), 0);
    for (const Drawing& layer : picture.layers) {
        PathWriter path(layer.points().size() * 8);
        layer.for_each_polygon([&](std::span<const PointTwips> polygon) { path.add(polygon); });
        svg.append("<path fill=\"")
            .append(css_colour(layer.colour()))
            .append("\" d=\"M0 0")
            .append(path.finish())
            .append("\"/>");
    }
    return svg.append("</svg>\n");
}

}  // namespace tavrix::drawing
