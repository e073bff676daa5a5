#include <algorithm>
#include <cmath>

#include "dialogs/chart_axis.h"
#include "dialogs/chart_canvas.h"

namespace tavrix::dialogs {
namespace {

using base::Text;
using drawing::Alignment;
using drawing::Outline;
using drawing::Place;

/// The labels under the axis: how much room they take, and which of them there is room for.
struct LabelRow {
    bool is_turned = false;
    std::size_t every = 1;
    double height = 0;
    double longest = 0;
};

class Plot {
  public:
    Plot(ChartCanvas& canvas, const Chart& chart, const ChartArea& area)
        : canvas_(canvas), chart_(chart), data_(chart.data), area_(area) {}

    void draw() {
        choose_axis();
        make_room();
        if (plot_.width() < 4 * canvas_.em() || plot_.height() < 4 * canvas_.em()) {
            canvas_.explain(u"Za mało miejsca na wykres.", area_);
            return;
        }
        draw_axis();
        if (chart_.kind == ChartKind::lines) {
            draw_lines();
        } else {
            draw_bars();
        }
        draw_zero();
        if (values_ != Values::hidden) write_values();
        write_labels();
    }

  private:
    enum class Values { hidden, upright, turned };

    bool has_bars() const { return chart_.kind != ChartKind::lines; }
    std::size_t row_count() const { return data_.labels.size(); }
    double slot() const { return plot_.width() / static_cast<double>(row_count()); }
    /// A group of bars leaves a fifth of its slot free.
    double bar_width() const { return slot() * 0.8 / static_cast<double>(data_.series.size()); }
    double slot_middle(std::size_t row) const {
        return plot_.left + slot() * (static_cast<double>(row) + 0.5);
    }
    double y_of(double value) const {
        return plot_.bottom - axis_.place_of(value) * plot_.height();
    }
    double base_line() const {
        return canvas_.snapped(y_of(std::clamp(0.0, axis_.low(), axis_.high())));
    }

    void choose_axis() {
        bool is_first = true;
        for (const ChartSeries& series : data_.series) {
            for (const std::optional<double>& value : series.values) {
                if (!value) continue;
                low_ = is_first ? *value : std::min(low_, *value);
                high_ = is_first ? *value : std::max(high_, *value);
                is_first = false;
            }
        }
        // A line may begin anywhere, but one that nearly reaches zero is read from there.
        const bool from_zero = has_bars() || low_ * 2 < high_;
        const bool to_zero = has_bars() || high_ * 2 > low_;
        const double low = from_zero ? std::min(low_, 0.0) : low_;
        const double high = to_zero ? std::max(high_, 0.0) : high_;
        const double steps =
            (area_.height() - 5 * canvas_.line_height()) / (2 * canvas_.line_height());
        axis_ = make_axis(low, high, std::clamp(static_cast<int>(steps), 2, 8));
    }

    void make_room() {
        double widest_tick = 0;
        for (std::int64_t tick = axis_.first; tick <= axis_.last; ++tick) {
            widest_tick = std::max(widest_tick, canvas_.width_of(axis_.label(tick)));
        }
        plot_ = area_;
        plot_.left = canvas_.snapped(area_.left + widest_tick + 2 * canvas_.gap());
        // Half a line for the highest tick's label, and one over it for what the values are.
        plot_.top += canvas_.line_height() * (heading().empty() ? 0.5 : 1.5) + canvas_.gap();
        plot_.bottom -= canvas_.line_height() + canvas_.gap() / 2;
        choose_labels();
        plot_.bottom -= labels_.height + canvas_.gap();
        choose_values();
        plot_.top = canvas_.snapped(plot_.top);
        plot_.bottom = canvas_.snapped(plot_.bottom);
    }

    void choose_labels() {
        double widest = 0;
        // Measuring costs by the character, and a label of so many has no room anyway.
        constexpr std::size_t longest_measured = 200;
        for (const Text& label : data_.labels) {
            widest = std::max(widest,
                              canvas_.width_of(base::TextView(label).substr(0, longest_measured)));
        }
        const double limit = std::min(canvas_.em() * 12, area_.height() / 4);
        if (widest + canvas_.gap() <= slot()) {
            labels_ = {false, 1, canvas_.line_height(), widest};
            return;
        }
        const double slanted = std::sqrt(0.5);
        labels_.is_turned = true;
        labels_.longest = std::min(widest, limit);
        labels_.height = (labels_.longest + canvas_.line_height()) * slanted;
        labels_.every = static_cast<std::size_t>(
            std::max(1.0, std::ceil(canvas_.line_height() / slanted / slot())));
    }

    // The longest of them decides for all, so that none seems to be forgotten.
    void choose_values() {
        const double room = has_bars() ? bar_width() / 0.8 : slot();
        if (!chart_.options.values || room < canvas_.em()) return;
        double widest = 0;
        for (const ChartSeries& series : data_.series) {
            for (const std::optional<double>& value : series.values) {
                if (value) widest = std::max(widest, canvas_.width_of(short_number(*value)));
            }
        }
        double height = canvas_.line_height();
        if (widest + canvas_.gap() / 2 <= room) {
            values_ = Values::upright;
        } else if (has_bars() && widest < plot_.height() / 4) {
            values_ = Values::turned;
            height = widest + canvas_.gap();
        } else {
            return;
        }
        // What the axis has left over above and below counts.
        const double above = (1 - axis_.place_of(high_)) * plot_.height();
        const double below = axis_.place_of(low_) * plot_.height();
        if (high_ > 0 || !has_bars()) plot_.top += std::max(0.0, height - above);
        if (low_ < 0 && has_bars()) plot_.bottom -= std::max(0.0, height - below);
    }

    void draw_axis() {
        if (chart_.options.grid) {
            drawing::Drawing& lines = canvas_.add_layer(canvas_.shade(0.18));
            for (std::int64_t tick = axis_.first; tick <= axis_.last; ++tick) {
                add_level(lines, y_of(axis_.at(tick)), plot_.left, plot_.right);
            }
        }
        drawing::Drawing& axis = canvas_.add_layer(canvas_.shade(0.6));
        axis.add_rectangle(twips(plot_.left), twips(plot_.top), twips(plot_.left + canvas_.pixel()),
                           twips(plot_.bottom));
        for (std::int64_t tick = axis_.first; tick <= axis_.last; ++tick) {
            const double y = y_of(axis_.at(tick));
            add_level(axis, y, plot_.left - canvas_.gap() / 2, plot_.left);
            canvas_.write(axis_.label(tick), {plot_.left - canvas_.gap(), y}, Alignment::right);
        }
        canvas_.write(canvas_.cut(heading(), area_.width()),
                      {area_.left, area_.top + canvas_.line_height() / 2});
    }

    Text heading() const {
        const Text unit(axis_.unit_name);
        if (data_.series.size() > 1) return unit;
        const Text& name = data_.series[0].name;
        return unit.empty() ? name : name + u" (" + unit + u")";
    }

    void draw_zero() {
        if (axis_.low() > 0 || axis_.high() < 0) return;
        drawing::Drawing& zero = canvas_.add_layer(canvas_.ink());
        add_level(zero, base_line(), plot_.left, plot_.right);
    }

    static std::int32_t twips(double length) { return drawing::whole_twips(length); }
    void add_level(drawing::Drawing& drawing, double y, double left, double right) {
        const double top = canvas_.snapped(y);
        drawing.add_rectangle(twips(left), twips(top), twips(right), twips(top + canvas_.pixel()));
    }

    Place bar_top(std::size_t series, std::size_t row) const {
        const double first = slot_middle(row) - slot() * 0.4;
        return {first + bar_width() * (static_cast<double>(series) + 0.5),
                y_of(*data_.series[series].values[row])};
    }

    void draw_bars() {
        // Thinner than this, edges and patterns would be all there is.
        const bool has_edges = bar_width() >= 5 * canvas_.pixel();
        for (std::size_t series = 0; series < data_.series.size(); ++series) {
            if (bar_width() < canvas_.pixel()) {
                canvas_.fill(pixel_bars(series), series, false);
                continue;
            }
            std::vector<Outline> bars;
            for (std::size_t row = 0; row < row_count(); ++row) {
                if (!data_.series[series].values[row]) continue;
                const Place top = bar_top(series, row);
                double left = top.x - bar_width() / 2;
                double right = top.x + bar_width() / 2;
                if (has_edges) {
                    left = canvas_.snapped(left);
                    right = canvas_.snapped(right);
                }
                bars.push_back(drawing::rectangle(left, std::min(top.y, base_line()), right,
                                                  std::max(top.y, base_line())));
            }
            canvas_.fill(bars, series, has_edges);
        }
    }

    /// Bars thinner than a pixel: in each pixel's column one as high and as deep as all of them.
    std::vector<Outline> pixel_bars(std::size_t series) const {
        std::vector<Outline> bars;
        double left = 0;
        double top = 0;
        double bottom = 0;
        const auto add = [&] {
            if (bottom > top) {
                bars.push_back(drawing::rectangle(left, top, left + canvas_.pixel(), bottom));
            }
        };
        for (std::size_t row = 0; row < row_count(); ++row) {
            if (!data_.series[series].values[row]) continue;
            const Place at = bar_top(series, row);
            const double column = std::floor(at.x / canvas_.pixel()) * canvas_.pixel();
            if (column != left) {
                add();
                left = column;
                top = bottom = base_line();
            }
            top = std::min(top, at.y);
            bottom = std::max(bottom, at.y);
        }
        add();
        return bars;
    }

    Place point(std::size_t series, std::size_t row) const {
        return {slot_middle(row), y_of(*data_.series[series].values[row])};
    }

    void draw_lines() {
        for (std::size_t series = 0; series < data_.series.size(); ++series) {
            std::vector<Outline> paths(1);
            for (std::size_t row = 0; row < row_count(); ++row) {
                if (data_.series[series].values[row]) {
                    paths.back().push_back(point(series, row));
                } else if (!paths.back().empty()) {
                    // A gap stays one.
                    paths.emplace_back();
                }
            }
            std::vector<Place> marked;
            for (Outline& path : paths) {
                const bool is_alone = path.size() == 1;
                if (is_alone || slot() >= canvas_.em()) {
                    marked.insert(marked.end(), path.begin(), path.end());
                }
                path = with_two_points_a_pixel(path);
            }
            // A line that turns within each dash shows no pattern.
            canvas_.draw_series_line(paths, series, slot() >= canvas_.em() / 2);
            canvas_.mark(marked, series);
        }
    }

    /// In each pixel's column the first, lowest, highest and last point: the line looks the same.
    Outline with_two_points_a_pixel(const Outline& path) const {
        if (slot() * 2 >= canvas_.pixel()) return path;
        Outline thinned;
        const auto column = [&](const Place& place) {
            return std::floor(place.x / canvas_.pixel());
        };
        for (auto begin = path.begin(); begin != path.end();) {
            const auto end = std::find_if(begin, path.end(), [&](const Place& place) {
                return column(place) != column(*begin);
            });
            const auto [lowest, highest] =
                std::minmax_element(begin, end, [](Place a, Place b) { return a.y < b.y; });
            for (const auto each :
                 {begin, std::min(lowest, highest), std::max(lowest, highest), end - 1}) {
                thinned.push_back(*each);
            }
            begin = end;
        }
        return thinned;
    }

    void write_values() {
        for (std::size_t series = 0; series < data_.series.size(); ++series) {
            for (std::size_t row = 0; row < row_count(); ++row) {
                const std::optional<double>& value = data_.series[series].values[row];
                if (value)
                    write_value(*value, has_bars() ? bar_top(series, row) : point(series, row));
            }
        }
    }

    void write_value(double value, Place at) {
        const bool is_below = has_bars() && value < 0;
        if (values_ == Values::turned) {
            at.y += is_below ? canvas_.gap() / 2 : -canvas_.gap() / 2;
            canvas_.write(short_number(value), at, is_below ? Alignment::right : Alignment::left,
                          90);
        } else {
            const double distance = canvas_.em() * (has_bars() ? 0.7 : 0.9);
            at.y += is_below ? distance : -distance;
            canvas_.write(short_number(value), at, Alignment::centre);
        }
    }

    void write_labels() {
        const double y = area_.bottom - canvas_.line_height() - canvas_.gap() / 2 - labels_.height;
        const double slanted = std::sqrt(0.5);
        for (std::size_t row = 0; row < row_count(); row += labels_.every) {
            const double x = slot_middle(row);
            if (labels_.is_turned) {
                // The first ones begin where the picture does.
                const double room = std::min(labels_.longest, (x - area_.left) / slanted);
                canvas_.write(canvas_.cut(data_.labels[row], room), {x, y + canvas_.em() * 0.5},
                              Alignment::right, 45);
            } else {
                canvas_.write(data_.labels[row], {x, y + canvas_.line_height() / 2},
                              Alignment::centre);
            }
        }
        canvas_.write(canvas_.cut(data_.label_heading, plot_.width()),
                      {(plot_.left + plot_.right) / 2, area_.bottom - canvas_.line_height() / 2},
                      Alignment::centre);
    }

    ChartCanvas& canvas_;
    const Chart& chart_;
    const ChartData& data_;
    ChartArea area_;
    ChartArea plot_;
    ChartAxis axis_;
    LabelRow labels_;
    Values values_ = Values::hidden;
    double low_ = 0;
    double high_ = 0;
};

}  // namespace

void draw_plot(ChartCanvas& canvas, const Chart& chart, const ChartArea& area) {
    Plot(canvas, chart, area).draw();
}

}  // namespace tavrix::dialogs
