#pragma once

#include <numeric>
#include <vector>

#include "ports/clock.h"

namespace tavrix::test {

/// Stands still and remembers what it was asked to sleep.
class FakeClock final : public ports::Clock {
  public:
    base::DateTime now_local() override { return now; }
    void sleep(std::chrono::milliseconds duration) override { sleeps.push_back(duration); }
    std::chrono::milliseconds slept() const {
        return std::accumulate(sleeps.begin(), sleeps.end(), std::chrono::milliseconds(0));
    }

    base::DateTime now{2026, 11, 21, 12, 30, 15};
    std::vector<std::chrono::milliseconds> sleeps;
};

}  // namespace tavrix::test
