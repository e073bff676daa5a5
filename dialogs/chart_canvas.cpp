#include "dialogs/chart_canvas.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace tavrix::dialogs {
namespace {

using base::Text;
using base::TextView;
using drawing::Colour;
using drawing::Outline;
using drawing::Place;

// M. Okabe, K. Ito, "Color Universal Design" (2008), with a grey in the place of the yellow, which
// paper swallows; as Windows writes colours. The strongest ones first.
constexpr std::array<Colour, 8> series_colours = {0xB27200, 0x009FE6, 0x739E00, 0x005ED5,
                                                  0xE9B456, 0xA779CC, 0x000000, 0x999999};

// A printer without colours and an eye that sees few tell these apart.
struct Pattern {
    double angle_degrees;
    bool is_crossed;
};
constexpr std::array<Pattern, 5> patterns = {
    {{45, false}, {-45, false}, {0, false}, {45, true}, {90, false}}};

Outline mark_outline(Place at, std::size_t shape, double radius) {
    switch (shape % 4) {
        case 0:
            return drawing::sector(at, radius, 0, 1);
        case 1:
            return drawing::rectangle(at.x - radius, at.y - radius, at.x + radius, at.y + radius);
        case 2:
            return {{at.x, at.y - radius * 1.2},
                    {at.x + radius * 1.2, at.y + radius},
                    {at.x - radius * 1.2, at.y + radius}};
        default:
            return {{at.x, at.y - radius * 1.3},
                    {at.x + radius * 1.3, at.y},
                    {at.x, at.y + radius * 1.3},
                    {at.x - radius * 1.3, at.y}};
    }
}

std::vector<double> dashes_of(std::size_t series, double em) {
    switch (series % 4) {
        case 0:
            return {};
        case 1:
            return {em * 0.8, em * 0.4};
        case 2:
            return {em * 0.2, em * 0.25};
        default:
            return {em * 0.8, em * 0.25, em * 0.2, em * 0.25};
    }
}

Outline closed(Outline outline) {
    outline.push_back(outline.front());
    return outline;
}

}  // namespace

double ChartCanvas::snapped(double twips) const noexcept {
    return std::round(twips / pixel()) * pixel();
}

Colour ChartCanvas::shade(double share) const noexcept {
    Colour mixed = 0;
    for (const int shift : {0, 8, 16}) {
        const double from = (look_.paper >> shift) & 0xFF;
        const double to = (look_.ink >> shift) & 0xFF;
        mixed |= static_cast<Colour>(std::lround(from + (to - from) * share)) << shift;
    }
    return mixed;
}

Text ChartCanvas::cut(TextView text, double width_twips, bool bold) const {
    // No label is read this far, and measuring costs by the character.
    constexpr std::size_t longest_label = 200;
    const auto fits = [&](TextView part) {
        return look_.text_width(part, em(), bold) <= width_twips;
    };
    if (text.size() <= longest_label && fits(text)) return Text(text);
    std::size_t shorter = 0;
    std::size_t longer = std::min(text.size(), longest_label);
    while (longer - shorter > 1) {
        const std::size_t middle = (shorter + longer) / 2;
        (fits(Text(text.substr(0, middle)) + u"…") ? shorter : longer) = middle;
    }
    // Not between the halves of a character.
    if (shorter > 0 && (text[shorter - 1] & 0xFC00) == 0xD800) --shorter;
    return shorter == 0 ? Text() : Text(text.substr(0, shorter)) + u"…";
}

void ChartCanvas::write(Text text, Place place, drawing::Alignment alignment, int angle_degrees) {
    if (text.empty()) return;
    picture_.labels.push_back({.text = std::move(text),
                               .x_twips = place.x,
                               .y_twips = place.y,
                               .em_twips = em(),
                               .alignment = alignment,
                               .angle_degrees = angle_degrees,
                               .colour = ink()});
}

void ChartCanvas::write_title(TextView text, const ChartArea& area) {
    constexpr double larger = 1.4;
    write(cut(text, area.width() / larger, true),
          {(area.left + area.right) / 2, (area.top + area.bottom) / 2}, drawing::Alignment::centre);
    if (picture_.labels.empty()) return;
    picture_.labels.back().em_twips *= larger;
    picture_.labels.back().bold = true;
}

void ChartCanvas::explain(TextView sentence, const ChartArea& area) {
    std::vector<Text> lines(1);
    for (const Text& word : base::split(Text(sentence), u' ')) {
        const Text longer = lines.back().empty() ? word : lines.back() + u" " + word;
        if (width_of(longer) <= area.width() || lines.back().empty()) {
            lines.back() = longer;
        } else {
            lines.push_back(word);
        }
    }
    double y =
        (area.top + area.bottom) / 2 - line_height() * (static_cast<double>(lines.size()) - 1) / 2;
    for (const Text& line : lines) {
        write(cut(line, area.width()), {(area.left + area.right) / 2, y},
              drawing::Alignment::centre);
        y += line_height();
    }
}

Colour ChartCanvas::series_colour(std::size_t series) const noexcept {
    return look_.in_colour ? series_colours[series % series_colours.size()] : look_.ink;
}

void ChartCanvas::fill(const std::vector<Outline>& outlines, std::size_t series, bool has_edges) {
    drawing::Drawing& filled = add_layer(series_colour(series));
    for (const Outline& outline : outlines) add_polygon(filled, outline);
    if (!has_edges) return;
    if (series > 0) {
        const Pattern& pattern = patterns[(series - 1) % patterns.size()];
        drawing::Drawing& hatched = add_layer(look_.paper);
        const double width = std::max(pixel(), em() / 12);
        for (const Outline& outline : outlines) {
            add_hatching(hatched, outline, {pattern.angle_degrees, em() / 2, width});
            if (pattern.is_crossed) {
                add_hatching(hatched, outline, {pattern.angle_degrees + 90, em() / 2, width});
            }
        }
    }
    drawing::Drawing& edges = add_layer(shade(0.8));
    for (const Outline& outline : outlines) add_line(edges, closed(outline), pixel());
}

void ChartCanvas::draw_series_line(const std::vector<Outline>& paths, std::size_t series,
                                   bool has_dashes) {
    drawing::Drawing& lines = add_layer(series_colour(series));
    const double width = std::max(2 * pixel(), em() / 8);
    const std::vector<double> dashes = has_dashes ? dashes_of(series, em()) : std::vector<double>();
    for (const Outline& path : paths) {
        if (dashes.empty()) {
            add_line(lines, path, width);
        } else {
            add_dashed_line(lines, path, width, dashes);
        }
    }
}

void ChartCanvas::mark(const std::vector<Place>& places, std::size_t series) {
    drawing::Drawing& marks = add_layer(series_colour(series));
    for (const Place place : places) add_polygon(marks, mark_outline(place, series, em() * 0.3));
}

void ChartCanvas::draw_key(Place middle, std::size_t series, bool as_line) {
    if (as_line) {
        const double half = em() * 0.8;
        draw_series_line({{{middle.x - half, middle.y}, {middle.x + half, middle.y}}}, series,
                         true);
        mark({middle}, series);
    } else {
        const double half = em() * 0.4;
        fill({drawing::rectangle(snapped(middle.x - half), snapped(middle.y - half),
                                 snapped(middle.x + half), snapped(middle.y + half))},
             series, true);
    }
}

}  // namespace tavrix::dialogs
