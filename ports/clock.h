#pragma once

#include <chrono>

#include "base/date_time.h"

namespace tavrix::ports {

/// Time and waiting. Everything that reads the time or sleeps goes through here, so that a wait of
/// minutes is a test of microseconds.
class Clock {
  public:
    virtual ~Clock() = default;
    /// The system's local time, whole seconds.
    virtual base::DateTime now_local() = 0;
    /// Time that only goes forward, whatever happens to the system's; for measuring, its beginning
    /// means nothing.
    virtual std::chrono::milliseconds steady_now() = 0;
    /// Blocks the calling thread.
    virtual void sleep(std::chrono::milliseconds duration) = 0;
};

}  // namespace tavrix::ports
