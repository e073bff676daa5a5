#include <algorithm>
#include <cmath>
#include <numeric>

#include "dialogs/chart_axis.h"
#include "dialogs/chart_canvas.h"

namespace tavrix::dialogs {
namespace {

using base::Text;
using drawing::Alignment;
using drawing::Place;

struct Slice {
    Text name;
    double value;
    /// Of the whole, in thousandths; those of all slices make 1000.
    std::int64_t thousandths = 0;
};

constexpr std::size_t most_slices = 7;

std::vector<Slice> slices_of(const ChartData& data) {
    std::vector<Slice> slices;
    for (std::size_t row = 0; row < data.labels.size(); ++row) {
        const std::optional<double>& value = data.series[0].values[row];
        if (value && *value > 0) slices.push_back({data.labels[row], *value});
    }
    if (slices.size() <= most_slices) return slices;
    // The largest stay where they stand.
    std::vector<double> values;
    for (const Slice& slice : slices) values.push_back(slice.value);
    std::ranges::nth_element(values, values.begin() + (most_slices - 1), std::ranges::greater());
    const double least = values[most_slices - 1];
    std::vector<Slice> large;
    Slice others{u"Pozostałe", 0};
    // Of several that are equal to the least, the first ones.
    auto equal_left =
        static_cast<std::ptrdiff_t>(most_slices) -
        std::ranges::count_if(slices, [&](const Slice& s) { return s.value > least; });
    for (Slice& slice : slices) {
        if (slice.value > least || (slice.value == least && equal_left-- > 0)) {
            large.push_back(std::move(slice));
        } else {
            others.value += slice.value;
        }
    }
    large.push_back(std::move(others));
    return large;
}

/// By the largest remainder, so that the percentages make 100.
void share_out(std::vector<Slice>& slices, double sum) {
    constexpr double whole = 1000;
    std::vector<std::size_t> order(slices.size());
    std::iota(order.begin(), order.end(), 0);
    std::int64_t left = static_cast<std::int64_t>(whole);
    const auto exact = [&](std::size_t i) { return slices[i].value / sum * whole; };
    for (Slice& slice : slices) {
        slice.thousandths = static_cast<std::int64_t>(std::floor(slice.value / sum * whole));
        left -= slice.thousandths;
    }
    std::ranges::stable_sort(order, std::ranges::greater(), [&](std::size_t i) {
        return exact(i) - static_cast<double>(slices[i].thousandths);
    });
    for (std::size_t i = 0; i < order.size() && left > 0; ++i, --left) {
        ++slices[order[i]].thousandths;
    }
}

Text share_of(const Slice& slice, bool with_value) {
    const Text share = polish_number(static_cast<double>(slice.thousandths) / 10, 1) + u"\u00A0%";
    return with_value ? short_number(slice.value) + u" (" + share + u")" : share;
}

/// The name as long as there is room, the share whole.
Text words_of_slice(const ChartCanvas& canvas, const Slice& slice, bool with_value, double width) {
    const Text share = share_of(slice, with_value);
    const Text name = canvas.cut(slice.name, width - canvas.width_of(u"  " + share));
    return name.empty() ? canvas.cut(share, width) : name + u"  " + share;
}

void draw_slices(ChartCanvas& canvas, const std::vector<Slice>& slices, double sum, Place centre,
                 double radius) {
    double begin = 0;
    for (std::size_t i = 0; i < slices.size(); ++i) {
        const double end = i + 1 == slices.size() ? 1 : begin + slices[i].value / sum;
        canvas.fill({drawing::sector(centre, radius, begin, end)}, i, true);
        begin = end;
    }
}

void draw_pie_with_legend(ChartCanvas& canvas, const Chart& chart, const std::vector<Slice>& slices,
                          double sum, const ChartArea& area) {
    double widest = 0;
    for (const Slice& slice : slices) {
        widest = std::max(
            widest, canvas.width_of(slice.name + u"  " + share_of(slice, chart.options.values)));
    }
    const double room = std::min(widest, area.width() / 2 - canvas.key_width());
    const double pie_right = area.right - room - canvas.key_width() - 2 * canvas.gap();
    const double radius = std::min(pie_right - area.left, area.height()) / 2;
    // Pie and legend together stand in the middle.
    const double margin = (pie_right - area.left - 2 * radius) / 2;
    const Place centre = {area.left + margin + radius, (area.top + area.bottom) / 2};
    draw_slices(canvas, slices, sum, centre, radius);
    const double spacing =
        std::min(canvas.line_height() * 1.3, area.height() / static_cast<double>(slices.size()));
    double y = centre.y - spacing * (static_cast<double>(slices.size()) - 1) / 2;
    const double x = centre.x + radius + 2 * canvas.gap();
    for (std::size_t i = 0; i < slices.size(); ++i, y += spacing) {
        canvas.draw_key({x + canvas.em() * 0.8, y}, i, false);
        canvas.write(words_of_slice(canvas, slices[i], chart.options.values, room),
                     {x + canvas.key_width(), y});
    }
}

struct SliceLabel {
    std::size_t slice;
    double y;
    Place edge;
};

/// Pushes labels of one side apart, top to bottom and back, so that none covers another.
void spread(std::vector<SliceLabel>& labels, double spacing, const ChartArea& area) {
    std::ranges::stable_sort(labels, {}, &SliceLabel::y);
    double least = area.top + spacing / 2;
    for (SliceLabel& label : labels) {
        label.y = std::max(label.y, least);
        least = label.y + spacing;
    }
    double most = area.bottom - spacing / 2;
    for (auto label = labels.rbegin(); label != labels.rend(); ++label) {
        label->y = std::min(label->y, most);
        most = label->y - spacing;
    }
}

void draw_pie_with_labels(ChartCanvas& canvas, const Chart& chart, const std::vector<Slice>& slices,
                          double sum, const ChartArea& area) {
    const double radius = std::min(area.width() / 4, area.height() / 2 - canvas.line_height());
    const Place centre = {(area.left + area.right) / 2, (area.top + area.bottom) / 2};
    draw_slices(canvas, slices, sum, centre, radius);
    std::vector<SliceLabel> sides[2];
    double begin = 0;
    for (std::size_t i = 0; i < slices.size(); ++i) {
        const double middle = begin + slices[i].value / sum / 2;
        begin += slices[i].value / sum;
        const double turn = middle * 2 * std::acos(-1);
        const Place edge = {centre.x + radius * std::sin(turn), centre.y - radius * std::cos(turn)};
        const double away = canvas.gap() / radius;
        sides[middle < 0.5 ? 1 : 0].push_back({i, edge.y + (edge.y - centre.y) * away, edge});
    }
    drawing::Drawing& leaders = canvas.add_layer(canvas.shade(0.6));
    for (const bool is_right : {false, true}) {
        spread(sides[is_right ? 1 : 0], canvas.line_height(), area);
        const double x = centre.x + (is_right ? 1 : -1) * (radius + 2 * canvas.em());
        const double room = is_right ? area.right - x : x - area.left;
        for (const SliceLabel& label : sides[is_right ? 1 : 0]) {
            const double end = x - (is_right ? 1 : -1) * canvas.gap();
            add_line(leaders, drawing::Outline{label.edge, {end, label.y}}, canvas.pixel());
            canvas.write(words_of_slice(canvas, slices[label.slice], chart.options.values, room),
                         {x, label.y}, is_right ? Alignment::left : Alignment::right);
        }
    }
}

}  // namespace

void draw_pie(ChartCanvas& canvas, const Chart& chart, const ChartArea& area) {
    const auto& values = chart.data.series[0].values;
    if (std::ranges::any_of(values, [](const auto& value) { return value && *value < 0; })) {
        canvas.explain(u"Wykres kołowy nie może pokazać wartości ujemnych. Liczby są w tabeli.",
                       area);
        return;
    }
    std::vector<Slice> slices = slices_of(chart.data);
    double sum = 0;
    for (const Slice& slice : slices) sum += slice.value;
    if (slices.empty()) {
        canvas.explain(
            u"Suma wartości wynosi zero, więc nie ma czego podzielić. Liczby są w tabeli.", area);
        return;
    }
    share_out(slices, sum);
    ChartArea room = area;
    canvas.write(canvas.cut(chart.data.series[0].name, area.width()),
                 {(area.left + area.right) / 2, area.top + canvas.line_height() / 2},
                 Alignment::centre);
    room.top += canvas.line_height() + canvas.gap();
    if (chart.options.legend) {
        draw_pie_with_legend(canvas, chart, slices, sum, room);
    } else {
        draw_pie_with_labels(canvas, chart, slices, sum, room);
    }
}

}  // namespace tavrix::dialogs
