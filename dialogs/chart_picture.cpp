#include "dialogs/chart_picture.h"

#include <algorithm>
#include <cmath>

#include "dialogs/chart_axis.h"
#include "dialogs/chart_canvas.h"
#include "dialogs/grid_numbers.h"

namespace tavrix::dialogs {
namespace {

using base::Text;

constexpr std::size_t most_legend_lines = 3;

/// The legend as centred lines at the top of `area`, which gets smaller by them.
void draw_legend(ChartCanvas& canvas, const Chart& chart, ChartArea& area) {
    struct Entry {
        Text name;
        double width;
    };
    const double widest = std::min(area.width(), canvas.em() * 20) - canvas.key_width();
    std::vector<std::vector<Entry>> lines(1);
    double used = 0;
    for (const ChartSeries& series : chart.data.series) {
        Text name = canvas.cut(series.name, widest);
        const double width = canvas.key_width() + canvas.width_of(name) + 2 * canvas.gap();
        if (used + width > area.width() && used > 0) {
            if (lines.size() == most_legend_lines) break;
            lines.emplace_back();
            used = 0;
        }
        used += width;
        lines.back().push_back({std::move(name), width});
    }
    std::size_t series = 0;
    for (const std::vector<Entry>& line : lines) {
        double total = 0;
        for (const Entry& entry : line) total += entry.width;
        double x = (area.left + area.right - total) / 2 + canvas.gap();
        const double y = area.top + canvas.line_height() / 2;
        for (const Entry& entry : line) {
            canvas.draw_key({x + canvas.em() * 0.8, y}, series++, chart.kind == ChartKind::lines);
            canvas.write(entry.name, {x + canvas.key_width(), y});
            x += entry.width;
        }
        area.top += canvas.line_height();
    }
    area.top += canvas.gap();
}

/// How many rows are not there, below everything else.
void draw_note(ChartCanvas& canvas, const ChartData& data, ChartArea& area) {
    const auto shown = static_cast<std::int32_t>(data.labels.size());
    Text note;
    if (shown < data.rows_asked) {
        note = u"Pokazano " + polish_number(shown, 0) + u" z " + polish_number(data.rows_asked, 0) +
               u" wierszy";
    }
    if (data.hidden_rows > 0) {
        note += (note.empty() ? u"" : u". ") + Text(u"Pominięte wiersze ukryte w tabeli: ") +
                polish_number(data.hidden_rows, 0);
    }
    if (note.empty()) return;
    canvas.write(canvas.cut(note, area.width()),
                 {area.right, area.bottom - canvas.line_height() / 2}, drawing::Alignment::right);
    area.bottom -= canvas.line_height() + canvas.gap();
}

/// Neither endless, nor too large to be divided into an axis.
bool can_be_drawn(const std::optional<double>& value) {
    return !value || std::fabs(*value) < largest_amount;
}

Text why_there_is_no_chart(const ChartData& data) {
    if (!data.failure.empty()) return data.failure;
    if (data.labels.empty()) return u"Nie ma wierszy do pokazania.";
    const bool has_numbers = std::ranges::any_of(data.series, [](const ChartSeries& series) {
        return std::ranges::any_of(series.values,
                                   [](const auto& value) { return value.has_value(); });
    });
    return has_numbers ? Text() : u"W pokazywanych kolumnach nie ma liczb.";
}

}  // namespace

drawing::Picture draw_chart(const Chart& chart, const ChartLook& look) {
    for (const ChartSeries& series : chart.data.series) {
        if (std::ranges::all_of(series.values, can_be_drawn)) continue;
        Chart drawn = chart;
        for (ChartSeries& its_series : drawn.data.series) {
            for (auto& value : its_series.values) {
                if (!can_be_drawn(value)) value.reset();
            }
        }
        return draw_chart(drawn, look);
    }
    ChartCanvas canvas(look);
    ChartArea area{canvas.em(), canvas.em(), look.width_twips - canvas.em(),
                   look.height_twips - canvas.em()};
    constexpr double least_room_em = 12;
    if (std::min(area.width(), area.height()) < least_room_em * canvas.em()) {
        canvas.explain(u"Za mało miejsca na wykres.", area);
        return canvas.take();
    }
    if (!base::trim(chart.title).empty()) {
        const double title_height = 2 * canvas.line_height();
        canvas.write_title(chart.title, {area.left, area.top, area.right, area.top + title_height});
        area.top += title_height;
    }
    if (const Text reason = why_there_is_no_chart(chart.data); !reason.empty()) {
        canvas.explain(reason, area);
        return canvas.take();
    }
    draw_note(canvas, chart.data, area);
    if (chart.kind == ChartKind::pie) {
        draw_pie(canvas, chart, area);
    } else {
        if (chart.options.legend) draw_legend(canvas, chart, area);
        draw_plot(canvas, chart, area);
    }
    return canvas.take();
}

}  // namespace tavrix::dialogs
