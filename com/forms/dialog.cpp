#include "com/forms/dialog.h"

#include <vector>

#include "com/forms/controls_context.h"
#include "com/module.h"
#include "windows/bstr.h"
#include "windows/gdi.h"
#include "windows/owned.h"

namespace tavrix::com {
namespace {

// Also of a window that goes before, with its owner.
using OwnedWindow = windows::Owned<HWND, DestroyWindow>;

// Keeps the user out of every window of the thread, as the hosts' own modal forms do. A window that
// was disabled before is left alone.
class DisabledWindows {
  public:
    DisabledWindows() noexcept {
        EnumThreadWindows(GetCurrentThreadId(), &DisabledWindows::collect,
                          reinterpret_cast<LPARAM>(this));
        for (const HWND window : windows_) EnableWindow(window, FALSE);
    }
    ~DisabledWindows() {
        for (const HWND window : windows_) EnableWindow(window, TRUE);
    }
    DisabledWindows(const DisabledWindows&) = delete;
    DisabledWindows& operator=(const DisabledWindows&) = delete;

    /// Null when there is none.
    HWND first() const noexcept { return windows_.empty() ? nullptr : windows_.front(); }

  private:
    static BOOL CALLBACK collect(HWND window, LPARAM list) noexcept {
        try {
            if (IsWindowVisible(window) && IsWindowEnabled(window)) {
                reinterpret_cast<DisabledWindows*>(list)->windows_.push_back(window);
            }
            return TRUE;
        } catch (...) {
            return FALSE;
        }
    }

    std::vector<HWND> windows_;
};

class WindowDevice {
  public:
    explicit WindowDevice(HWND window) noexcept : window_(window), device_(GetDC(window)) {}
    ~WindowDevice() { ReleaseDC(window_, device_); }
    WindowDevice(const WindowDevice&) = delete;
    WindowDevice& operator=(const WindowDevice&) = delete;
    HDC get() const noexcept { return device_; }

  private:
    HWND window_;
    HDC device_;
};

// The pixels that a static control's text needs below each other when no line may be wider than
// the control.
int height_of_text(HWND control, int width_px) {
    base::Text text(static_cast<std::size_t>(GetWindowTextLengthW(control)) + 1, u'\0');
    GetWindowTextW(control, reinterpret_cast<wchar_t*>(text.data()), static_cast<int>(text.size()));
    const WindowDevice device(control);
    const windows::Selected font(device.get(),
                                 reinterpret_cast<HFONT>(SendMessageW(control, WM_GETFONT, 0, 0)));
    RECT needed = {0, 0, width_px, 0};
    // As static controls draw.
    DrawTextW(device.get(), windows::wide(text), -1, &needed,
              DT_CALCRECT | DT_WORDBREAK | DT_EXPANDTABS | DT_NOPREFIX);
    return static_cast<int>(needed.bottom);
}

HWND make_window(int template_number, HWND owner, DLGPROC procedure, Dialog* dialog) noexcept {
    const ControlsContext themed_controls;
    return CreateDialogParamW(module_handle(), MAKEINTRESOURCEW(template_number), owner, procedure,
                              reinterpret_cast<LPARAM>(dialog));
}

}  // namespace

void FormPlace::leave() noexcept {
    window_ = nullptr;
    taken_ = false;
}

void FormPlace::bring_to_front() const noexcept {
    const HWND window = window_;
    if (window != nullptr) SetForegroundWindow(GetLastActivePopup(window));
}

void Dialog::show_in(FormPlace& place) noexcept {
    if (!place.take()) {
        place.bring_to_front();
        return;
    }
    show_over_host(place);
    place.leave();
}

// Not the system's own DialogBox: its loop would run the host's code under the form's activation
// context, and windows that the host makes meanwhile would get other controls than usual.
void Dialog::show_over_host(FormPlace& place) noexcept {
    // The windows are enabled before the form goes, or another program's would become active.
    OwnedWindow made;
    const HWND active = GetActiveWindow();
    const DisabledWindows disabled;
    // A host that calls while another program is in front has no active window.
    const HWND owner = active != nullptr ? active : disabled.first();
    made.reset(make_window(template_number_, owner, &Dialog::procedure, this));
    if (!made || closing_) return;
    place.show(made.get());
    ShowWindow(made.get(), SW_SHOW);
    run(owner);
}

void Dialog::run(HWND owner) noexcept {
    while (window_ != nullptr && !closing_) {
        MSG message{};
        // Hosts do their idle work when a modal form tells them that it waits.
        if (owner != nullptr && !PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE)) {
            SendMessageW(owner, WM_ENTERIDLE, MSGF_DIALOGBOX, reinterpret_cast<LPARAM>(window_));
        }
        const BOOL received = GetMessageW(&message, nullptr, 0, 0);
        // The end of the program is the host's own loop's business.
        if (received == 0) PostQuitMessage(static_cast<int>(message.wParam));
        if (received <= 0) return;
        deliver(message);
    }
}

bool Dialog::deliver_messages() noexcept {
    MSG message{};
    while (window_ != nullptr && !closing_ && PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        if (message.message == WM_QUIT) {
            PostQuitMessage(static_cast<int>(message.wParam));
            closing_ = true;
        } else {
            deliver(message);
        }
    }
    return window_ != nullptr && !closing_;
}

void Dialog::deliver(MSG& message) noexcept {
    if (window_ != nullptr && IsDialogMessageW(window_, &message)) return;
    TranslateMessage(&message);
    DispatchMessageW(&message);
}

INT_PTR CALLBACK Dialog::procedure(HWND window, UINT message, WPARAM wparam,
                                   LPARAM lparam) noexcept {
    if (message == WM_INITDIALOG) {
        SetWindowLongPtrW(window, DWLP_USER, lparam);
        reinterpret_cast<Dialog*>(lparam)->window_ = window;
    }
    auto* dialog = reinterpret_cast<Dialog*>(GetWindowLongPtrW(window, DWLP_USER));
    // The first messages come before the form is known.
    if (dialog == nullptr) return FALSE;
    try {
        return dialog->handle(message, wparam, lparam);
    } catch (...) {
        dialog->close();
        return FALSE;
    }
}

INT_PTR Dialog::handle(UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
        case WM_INITDIALOG:
            on_open();
            // TRUE lets the system choose the control with the focus.
            return IsChild(window_, GetFocus()) ? FALSE : TRUE;
        case WM_COMMAND:
            // Edit controls report their changes here too.
            if (HIWORD(wparam) != BN_CLICKED) return FALSE;
            on_command(LOWORD(wparam));
            return TRUE;
        case WM_CLOSE:
            close();
            return TRUE;
        case WM_NCDESTROY:
            window_ = nullptr;
            wake();
            return FALSE;
        default:
            return on_message(message, wparam, lparam) ? TRUE : FALSE;
    }
}

void Dialog::on_command(int id) {
    if (id == IDCANCEL) close();
}

bool Dialog::on_message(UINT, WPARAM, LPARAM) {
    return false;
}

void Dialog::close() noexcept {
    closing_ = true;
    wake();
}

// A message that was sent, not posted, does not let the loop's waiting end.
void Dialog::wake() noexcept {
    PostThreadMessageW(GetCurrentThreadId(), WM_NULL, 0, 0);
}

void Dialog::set_text(int id, const base::Text& text) noexcept {
    SetDlgItemTextW(window_, id, windows::wide(text));
}

void Dialog::grow_to_text(int id) {
    const HWND growing = control(id);
    RECT place{};
    GetWindowRect(growing, &place);
    const int width_px = static_cast<int>(place.right - place.left);
    const int height_px = height_of_text(growing, width_px);
    const int missing_px = height_px - static_cast<int>(place.bottom - place.top);
    if (missing_px <= 0) return;
    SetWindowPos(growing, nullptr, 0, 0, width_px, height_px, SWP_NOMOVE | SWP_NOZORDER);
    move_down_below(place.bottom, missing_px);
}

// `edge_px` counts from the top of the screen.
void Dialog::move_down_below(LONG edge_px, int distance_px) noexcept {
    for (HWND child = GetWindow(window_, GW_CHILD); child != nullptr;
         child = GetWindow(child, GW_HWNDNEXT)) {
        RECT place{};
        GetWindowRect(child, &place);
        if (place.top < edge_px) continue;
        POINT corner = {place.left, place.top};
        ScreenToClient(window_, &corner);
        SetWindowPos(child, nullptr, corner.x, corner.y + distance_px, 0, 0,
                     SWP_NOSIZE | SWP_NOZORDER);
    }
    RECT form{};
    GetWindowRect(window_, &form);
    // Half of it upwards: the form stays where it was centred.
    SetWindowPos(window_, nullptr, form.left, form.top - distance_px / 2, form.right - form.left,
                 form.bottom - form.top + distance_px, SWP_NOZORDER | SWP_NOACTIVATE);
}

}  // namespace tavrix::com
