#pragma once

#include <vector>

#include "windows/automation.h"

namespace tavrix::com {

/// The calling thread's windows under a modal form. Keeps the user out of every one of them, as the
/// hosts' own modal forms do; a window that was disabled before is left alone.
class HostWindows {
  public:
    HostWindows() noexcept;
    ~HostWindows();
    HostWindows(const HostWindows&) = delete;
    HostWindows& operator=(const HostWindows&) = delete;

    /// What the form belongs to; null when the thread has no window that a form could lie on.
    HWND owner() const noexcept { return owner_; }
    /// Shows the form where the user finds it: above a splash window that lies on top of all
    /// others, and with a sign on the task bar when another program is in front.
    void bring_up(HWND form) const noexcept;

  private:
    static BOOL CALLBACK collect(HWND window, LPARAM host) noexcept;
    HWND choose_owner(HWND active) const noexcept;
    bool one_lies_on_top() const noexcept;

    std::vector<HWND> disabled_;
    HWND owner_ = nullptr;
};

}  // namespace tavrix::com
