#pragma once

#include <functional>

#include "dialogs/chart.h"

namespace tavrix::dialogs {

/// The chart window on the user's desktop.
class ChartWindow {
  public:
    virtual ~ChartWindow() = default;

    /// Takes the place of the one chart window of the process, asks `read` for what it is to show,
    /// shows it and returns when it was closed. While one is there already it comes to the front
    /// instead, and `read` is not asked. False when nothing was shown.
    virtual bool show(const std::function<Chart()>& read) noexcept = 0;
};

}  // namespace tavrix::dialogs
