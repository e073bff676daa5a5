#pragma once

#include "windows/automation.h"

namespace tavrix::com {

/// While it lives, the thread's new windows get the system's themed controls, whatever the host's
/// own manifest asks for. Where the system has none, they are the plain ones. To be held only while
/// a form is made: never while the host's code runs.
class ControlsContext {
  public:
    ControlsContext() noexcept;
    ~ControlsContext();
    ControlsContext(const ControlsContext&) = delete;
    ControlsContext& operator=(const ControlsContext&) = delete;

  private:
    HANDLE context_;
    ULONG_PTR cookie_ = 0;
    bool active_ = false;
};

}  // namespace tavrix::com
