#include "drawing/svg.h"

#include <charconv>

namespace tavrix::ports {
namespace {

// The longest decimal of 32 bits, with its sign, and a letter.
constexpr std::size_t longest_step = 13;

/// Appends to a text that grows in large steps: a symbol is a few hundred short numbers.
class SvgText {
  public:
    explicit SvgText(std::size_t expected) { text_.resize(expected); }

    void add(std::string_view words) {
        make_room(words.size());
        words.copy(text_.data() + used_, words.size());
        used_ += words.size();
    }
    void add(char letter, std::int32_t number) {
        make_room(longest_step);
        text_[used_++] = letter;
        add_digits(number);
    }
    void add(std::int32_t number) {
        make_room(longest_step);
        add_digits(number);
    }
    std::string finish() {
        text_.resize(used_);
        return std::move(text_);
    }

  private:
    void add_digits(std::int32_t number) {
        char* begin = text_.data() + used_;
        used_ += static_cast<std::size_t>(std::to_chars(begin, begin + longest_step, number).ptr -
                                          begin);
    }
    void make_room(std::size_t more) {
        if (text_.size() - used_ < more) text_.resize(text_.size() * 2 + more);
    }

    std::string text_;
    std::size_t used_ = 0;
};

bool is_rectangle(std::span<const PointTwips> p) noexcept {
    return p.size() == 4 && p[0].y_twips == p[1].y_twips && p[1].x_twips == p[2].x_twips &&
           p[2].y_twips == p[3].y_twips && p[3].x_twips == p[0].x_twips;
}

void add_polygon(SvgText& svg, std::span<const PointTwips> polygon) {
    svg.add('M', polygon[0].x_twips);
    svg.add(' ', polygon[0].y_twips);
    if (is_rectangle(polygon)) {
        svg.add('H', polygon[1].x_twips);
        svg.add('V', polygon[2].y_twips);
        svg.add('H', polygon[3].x_twips);
    } else {
        char letter = 'L';
        for (const PointTwips point : polygon.subspan(1)) {
            svg.add(letter, point.x_twips);
            svg.add(' ', point.y_twips);
            letter = ' ';
        }
    }
    svg.add("z");
}

void add_points(SvgText& svg, std::int32_t twips) {
    constexpr std::int32_t twips_per_point = 20;
    svg.add(twips / twips_per_point);
    svg.add(".");
    const std::int32_t hundredths = twips % twips_per_point * (100 / twips_per_point);
    if (hundredths < 10) svg.add("0");
    svg.add(hundredths);
}

std::string css_colour(Colour colour) {
    constexpr char digits[] = "0123456789abcdef";
    std::string text = "#";
    for (const int shift : {4, 0, 12, 8, 20, 16}) text += digits[(colour >> shift) & 0xF];
    return text;
}

}  // namespace

std::string to_svg(const Drawing& drawing) {
    SvgText svg(256 + drawing.points().size() * 8);
    svg.add("<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"");
    add_points(svg, drawing.width_twips());
    svg.add("pt\" height=\"");
    add_points(svg, drawing.height_twips());
    svg.add("pt\" viewBox=\"0 0 ");
    svg.add(drawing.width_twips());
    svg.add(' ', drawing.height_twips());
    // Crisp edges keep neighbouring modules from showing a seam.
    svg.add("\"><path fill=\"#fff\" d=\"M0 0H");
    svg.add(drawing.width_twips());
    svg.add('V', drawing.height_twips());
    svg.add("H0z\"/><path shape-rendering=\"crispEdges\" fill=\"");
    svg.add(css_colour(drawing.colour()));
    svg.add("\" d=\"");
    drawing.for_each_polygon(
        [&](std::span<const PointTwips> polygon) { add_polygon(svg, polygon); });
    svg.add("\"/></svg>\n");
    return svg.finish();
}

}  // namespace tavrix::ports
