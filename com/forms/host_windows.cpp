#include "com/forms/host_windows.h"

#include <algorithm>

namespace tavrix::com {
namespace {

// Hosts have visible windows that are none: the empty one of their run-time library, tool bars,
// balloons. What belongs to a minimised window goes with it.
bool can_own_a_form(HWND window) noexcept {
    RECT place{};
    return IsWindowVisible(window) && !IsIconic(window) && GetWindowRect(window, &place) &&
           !IsRectEmpty(&place) && (GetWindowLongW(window, GWL_EXSTYLE) & WS_EX_TOOLWINDOW) == 0;
}

bool another_program_is_in_front() noexcept {
    DWORD process = 0;
    GetWindowThreadProcessId(GetForegroundWindow(), &process);
    return process != GetCurrentProcessId();
}

// Called while a button is down, a host's control still has the mouse and would get the first click
// on the form.
void end_mouse_capture() noexcept {
    const HWND captor = GetCapture();
    if (captor == nullptr) return;
    SendMessageW(captor, WM_CANCELMODE, 0, 0);
    ReleaseCapture();
}

}  // namespace

HostWindows::HostWindows() noexcept {
    end_mouse_capture();
    const HWND active = GetActiveWindow();
    EnumThreadWindows(GetCurrentThreadId(), &HostWindows::collect, reinterpret_cast<LPARAM>(this));
    owner_ = choose_owner(active);
    for (const HWND window : disabled_) EnableWindow(window, FALSE);
}

HostWindows::~HostWindows() {
    for (const HWND window : disabled_) EnableWindow(window, TRUE);
}

BOOL CALLBACK HostWindows::collect(HWND window, LPARAM host) noexcept {
    try {
        if (IsWindowVisible(window) && IsWindowEnabled(window)) {
            reinterpret_cast<HostWindows*>(host)->disabled_.push_back(window);
        }
        return TRUE;
    } catch (...) {
        return FALSE;
    }
}

// A host that calls while another program is in front has no active window.
HWND HostWindows::choose_owner(HWND active) const noexcept {
    if (active != nullptr && can_own_a_form(active)) return active;
    const auto owns_another = [this](HWND window) {
        return can_own_a_form(window) && std::ranges::any_of(disabled_, [window](HWND other) {
                   return GetWindow(other, GW_OWNER) == window;
               });
    };
    auto found = std::ranges::find_if(disabled_, owns_another);
    if (found == disabled_.end()) found = std::ranges::find_if(disabled_, can_own_a_form);
    if (found == disabled_.end()) return nullptr;
    const HWND latest = GetLastActivePopup(*found);
    return can_own_a_form(latest) ? latest : *found;
}

bool HostWindows::one_lies_on_top() const noexcept {
    return std::ranges::any_of(disabled_, [](HWND window) {
        return (GetWindowLongW(window, GWL_EXSTYLE) & WS_EX_TOPMOST) != 0;
    });
}

void HostWindows::bring_up(HWND form) const noexcept {
    // Not ShowWindow: a process's first call of it obeys whoever started the process, and that may
    // have asked for a hidden window.
    SetWindowPos(form, one_lies_on_top() ? HWND_TOPMOST : HWND_TOP, 0, 0, 0, 0,
                 SWP_NOMOVE | SWP_NOSIZE | SWP_SHOWWINDOW);
    if (!another_program_is_in_front()) return;
    SetForegroundWindow(form);
    if (!another_program_is_in_front()) return;
    // A form that belongs to a window has no place on the task bar.
    FLASHWINFO flash{};
    flash.cbSize = sizeof flash;
    flash.hwnd = owner_ != nullptr ? owner_ : form;
    flash.dwFlags = FLASHW_ALL | FLASHW_TIMERNOFG;
    FlashWindowEx(&flash);
}

}  // namespace tavrix::com
