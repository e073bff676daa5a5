// How slow a stage may be told to be, by a form or over HTTP.
#pragma once

#include <cstdint>

#include "sandbox/service/options.h"

namespace tavrix::sandbox {

inline constexpr int longest_delay_ms = 24 * 3600 * 1000, most_polls = 1'000'000;

inline bool is_within(std::int64_t number, int most) {
    return number >= 0 && number <= most;
}

}  // namespace tavrix::sandbox
