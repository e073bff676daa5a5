#pragma once

#include <cstdint>

#include "base/text.h"
#include "ports/host_object.h"

namespace tavrix::dialogs {

/// What the chart window draws.
struct ChartRecord {
    bool full_screen = false;
    /// The host's grid while the call lasts; null before and after, because it is the host's.
    ports::HostObject* grid = nullptr;
    std::int32_t column = 0;
    base::Text text;
    std::int32_t x1 = 0;
    std::int32_t x2 = 0;
    std::int32_t x3 = 0;
    base::Text title;
    base::Text kind;
    base::Text checks;
    std::int16_t options = 0;
};

}  // namespace tavrix::dialogs
