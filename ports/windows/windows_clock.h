#pragma once

#include "ports/clock.h"

namespace tavrix::windows {

class WindowsClock final : public ports::Clock {
  public:
    base::DateTime now_local() override;
    void sleep(std::chrono::milliseconds duration) override;
};

}  // namespace tavrix::windows
