#include "com/forms/dialog.h"

#include <algorithm>

#include "com/forms/controls_context.h"
#include "com/forms/form_template.h"
#include "com/forms/form_text.h"
#include "com/forms/host_windows.h"
#include "com/module.h"
#include "windows/bstr.h"
#include "windows/desktop.h"
#include "windows/owned.h"

namespace tavrix::com {
namespace {

// Also of a window that goes before, with its owner.
using OwnedWindow = windows::Owned<HWND, DestroyWindow>;

HWND make_window(int template_number, HWND owner, DLGPROC procedure, Dialog* dialog) noexcept {
    try {
        const std::vector<std::byte> bytes = template_in_user_font(template_number);
        if (bytes.empty()) return nullptr;
        const ControlsContext themed_controls;
        return CreateDialogIndirectParamW(module_handle(),
                                          reinterpret_cast<const DLGTEMPLATE*>(bytes.data()), owner,
                                          procedure, reinterpret_cast<LPARAM>(dialog));
    } catch (...) {
        return nullptr;
    }
}

SIZE size_of(const RECT& place) noexcept {
    return {place.right - place.left, place.bottom - place.top};
}

RECT place_of_window(HWND window) noexcept {
    RECT place{};
    GetWindowRect(window, &place);
    return place;
}

// A dialog procedure's own result, where the system takes it for the message's.
bool procedure_gives_the_result(UINT message) noexcept {
    return (message >= WM_CTLCOLORMSGBOX && message <= WM_CTLCOLORSTATIC) ||
           message == WM_COMPAREITEM || message == WM_CHARTOITEM || message == WM_VKEYTOITEM ||
           message == WM_QUERYDRAGICON;
}

bool is_label(HWND control) noexcept {
    return (SendMessageW(control, WM_GETDLGCODE, 0, 0) & DLGC_STATIC) != 0;
}

BOOL CALLBACK tell_colors(HWND control, LPARAM) noexcept {
    SendMessageW(control, WM_SYSCOLORCHANGE, 0, 0);
    return TRUE;
}

}  // namespace

bool only_control_is_down() noexcept {
    return GetKeyState(VK_CONTROL) < 0 && GetKeyState(VK_MENU) >= 0;
}

bool Dialog::show_in(FormPlace& place) noexcept {
    const TakenPlace taken(place);
    return taken && show_at(taken);
}

// Not the system's own DialogBox: its loop would run the host's code under the form's activation
// context, and windows that the host makes meanwhile would get other controls than usual.
bool Dialog::show_at(const TakenPlace& place) noexcept {
    if (!windows::desktop_is_seen()) return false;
    // The windows are enabled before the form goes, or another program's would become active.
    OwnedWindow made;
    const HostWindows host;
    made.reset(make_window(template_number_, host.owner(), &Dialog::procedure, this));
    if (!made || closing_) return false;
    place.show(made.get());
    host.bring_up(made.get());
    run(host.owner());
    return true;
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
    if (window_ != nullptr && (is_own_key(message) || IsDialogMessageW(window_, &message))) return;
    TranslateMessage(&message);
    DispatchMessageW(&message);
}

bool Dialog::is_own_key(const MSG& message) noexcept {
    if (message.message != WM_KEYDOWN) return false;
    if (message.hwnd != window_ && !IsChild(window_, message.hwnd)) return false;
    try {
        return on_key(static_cast<UINT>(message.wParam));
    } catch (...) {
        close();
        return true;
    }
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
            open();
            // TRUE lets the system choose the control with the focus.
            return IsChild(window_, GetFocus()) ? FALSE : TRUE;
        case WM_COMMAND:
            return command(wparam, lparam);
        case WM_CLOSE:
            close();
            return TRUE;
        case WM_SIZE:
            if (opened_ && wparam != SIZE_MINIMIZED) tell_size();
            return FALSE;
        case WM_GETMINMAXINFO:
            if (opened_) tell_smallest_size(*reinterpret_cast<MINMAXINFO*>(lparam));
            return FALSE;
        case WM_SYSCOLORCHANGE:
            // Only the form is told; the themed controls want to know as well.
            EnumChildWindows(window_, &tell_colors, 0);
            return pass_on(message, wparam, lparam);
        case WM_NCDESTROY:
            window_ = nullptr;
            wake();
            return FALSE;
        default:
            return pass_on(message, wparam, lparam);
    }
}

void Dialog::open() {
    on_open();
    resize(size_of(place_of_window(window_)));
    WINDOWPLACEMENT placement{};
    placement.length = sizeof placement;
    GetWindowPlacement(window_, &placement);
    // Not that of a form that opens with the whole screen.
    first_size_ = size_of(placement.rcNormalPosition);
    opened_ = true;
    tell_size();
}

INT_PTR Dialog::command(WPARAM wparam, LPARAM lparam) {
    const HWND sender = reinterpret_cast<HWND>(lparam);
    if (sender != nullptr && is_label(sender)) return FALSE;
    // Controls tell of their first texts before the form is open.
    if (opened_) on_command(LOWORD(wparam), HIWORD(wparam));
    return TRUE;
}

INT_PTR Dialog::pass_on(UINT message, WPARAM wparam, LPARAM lparam) {
    const std::optional<INT_PTR> result = on_message(message, wparam, lparam);
    if (!result) return FALSE;
    if (procedure_gives_the_result(message)) return *result;
    SetWindowLongPtrW(window_, DWLP_MSGRESULT, *result);
    return TRUE;
}

void Dialog::tell_size() {
    RECT inside{};
    GetClientRect(window_, &inside);
    on_size(inside.right, inside.bottom);
}

void Dialog::tell_smallest_size(MINMAXINFO& limits) const noexcept {
    const SIZE smallest = smallest_size();
    limits.ptMinTrackSize = {smallest.cx, smallest.cy};
}

void Dialog::on_command(int id, int) {
    if (id == IDCANCEL) close();
}

std::optional<INT_PTR> Dialog::on_message(UINT, WPARAM, LPARAM) {
    return {};
}

bool Dialog::on_key(UINT) {
    return false;
}

void Dialog::on_size(int, int) {}

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
    const RECT place = place_of_window(growing);
    const SIZE size = size_of(place);
    // As static controls draw.
    const SIZE needed = size_of_text(growing, text_of_control(growing), static_cast<int>(size.cx),
                                     DT_WORDBREAK | DT_EDITCONTROL | DT_EXPANDTABS | DT_NOPREFIX);
    const LONG room_px = size_of(work_area()).cy - size_of(place_of_window(window_)).cy;
    const LONG missing_px = std::min(needed.cy - size.cy, room_px);
    if (missing_px <= 0) return;
    SetWindowPos(growing, nullptr, 0, 0, size.cx, size.cy + missing_px, SWP_NOMOVE | SWP_NOZORDER);
    move_down_below(place.bottom, missing_px);
}

// `edge_px` counts from the top of the screen.
void Dialog::move_down_below(LONG edge_px, int distance_px) noexcept {
    for (HWND child = GetWindow(window_, GW_CHILD); child != nullptr;
         child = GetWindow(child, GW_HWNDNEXT)) {
        const RECT place = place_of_window(child);
        if (place.top < edge_px) continue;
        POINT corner = {place.left, place.top};
        ScreenToClient(window_, &corner);
        SetWindowPos(child, nullptr, corner.x, corner.y + distance_px, 0, 0,
                     SWP_NOSIZE | SWP_NOZORDER);
    }
    const SIZE form = size_of(place_of_window(window_));
    resize({form.cx, form.cy + distance_px});
}

void Dialog::resize(SIZE size_px) noexcept {
    // It has the screen already.
    if (IsZoomed(window_)) return;
    const RECT room = work_area();
    const RECT form = place_of_window(window_);
    const SIZE before = size_of(form);
    const LONG width = std::min(size_px.cx, size_of(room).cx);
    const LONG height = std::min(size_px.cy, size_of(room).cy);
    const LONG left =
        std::clamp(form.left - (width - before.cx) / 2, room.left, room.right - width);
    const LONG top =
        std::clamp(form.top - (height - before.cy) / 2, room.top, room.bottom - height);
    SetWindowPos(window_, nullptr, left, top, width, height, SWP_NOZORDER | SWP_NOACTIVATE);
}

SIZE Dialog::pixels(int width_units, int height_units) const noexcept {
    RECT size = {0, 0, width_units, height_units};
    MapDialogRect(window_, &size);
    return {size.right, size.bottom};
}

RECT Dialog::work_area() const noexcept {
    MONITORINFO monitor{};
    monitor.cbSize = sizeof monitor;
    GetMonitorInfoW(MonitorFromWindow(window_, MONITOR_DEFAULTTONEAREST), &monitor);
    return monitor.rcWork;
}

}  // namespace tavrix::com
