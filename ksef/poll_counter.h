#pragma once

#include "ports/clock.h"

namespace tavrix::ksef {

/// The pauses between status polls: ten of one second, then two seconds each, 121 polls and 232
/// seconds in all.
class PollCounter {
  public:
    /// Counts a poll and waits. False when the limit is passed and the wait was the last.
    bool wait(ports::Clock& clock) {
        ++count_;
        clock.sleep(std::chrono::milliseconds(count_ <= 10 ? 1000 : 2000));
        return count_ <= 120;
    }

  private:
    int count_ = 0;
};

}  // namespace tavrix::ksef
