#pragma once

#include <chrono>

#include "base/date_time.h"

namespace tavrix::ports {

/// How far the system's local time is ahead of UTC at `local`. Of a moment that the end of summer
/// time makes twice, one of the two.
std::chrono::minutes utc_offset_at(const base::DateTime& local);

}  // namespace tavrix::ports
