#pragma once

#include <cmath>
#include <cstdint>

namespace tavrix::base {

/// Automation's fixed-point number with four decimals.
struct Currency {
    std::int64_t ten_thousandths = 0;

    static Currency from(double value) noexcept { return {std::llround(value * 10000)}; }
    friend bool operator==(Currency, Currency) = default;
};

}  // namespace tavrix::base
