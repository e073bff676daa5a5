#pragma once

#include "ports/clock.h"

namespace tavrix::test {

/// Stands still and adds up how long it was asked to sleep.
class FakeClock : public ports::Clock {
  public:
    base::DateTime now_local() override { return now; }
    std::chrono::milliseconds steady_now() override { return slept; }
    void sleep(std::chrono::milliseconds duration) override { slept += duration; }

    base::DateTime now{2026, 11, 21, 12, 30, 15};
    std::chrono::milliseconds slept{0};
};

}  // namespace tavrix::test
