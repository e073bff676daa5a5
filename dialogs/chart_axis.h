#pragma once

#include <cstdint>

#include "base/text.h"

namespace tavrix::dialogs {

/// A number as Poles write it: a comma, thousands apart by a no-break blank, `decimals` digits
/// behind the comma; no "-0". From 1E15 on as "1,5E+20".
base::Text polish_number(double value, int decimals);

/// The same with as many digits behind the comma as the number needs.
base::Text trimmed_number(double value, int most_decimals);

/// As it is written into a chart: two digits behind the comma at most, six for less than 1.
base::Text short_number(double value);

/// An axis of values whose ticks are round numbers: tick k stands at k * `step`.
struct ChartAxis {
    double step = 1;
    std::int64_t first = 0;
    std::int64_t last = 1;
    /// What every number is divided by when it is written, and its name: 1, or 1E6 and "mln".
    double unit = 1;
    base::TextView unit_name;

    double low() const noexcept { return at(first); }
    double high() const noexcept { return at(last); }
    double at(std::int64_t tick) const noexcept { return static_cast<double>(tick) * step; }
    /// 0 at the axis's low end, 1 at its high end.
    double place_of(double value) const noexcept { return (value - low()) / (high() - low()); }
    base::Text label(std::int64_t tick) const;
};

/// An axis that holds the finite numbers `low` and `high`, with a step of 1, 2 or 5 times a power
/// of ten: five to eight steps where `most_steps` allows as many. Equal numbers get room on both
/// sides.
ChartAxis make_axis(double low, double high, int most_steps);

}  // namespace tavrix::dialogs
