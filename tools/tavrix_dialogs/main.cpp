// tavrix-dialogs NAME [--picture FILE]: one of the library's own windows with sample content, over
// a window of a host; prints what it gave. With --picture nobody needs to be there: a bitmap of the
// window is written, in the scale of the screen it finds, and the window is closed again.

#include <cstdio>

#include <algorithm>
#include <optional>

#include "tools/tavrix_dialogs/entries.h"
#include "tools/tavrix_dialogs/picture.h"
#include "windows/bstr.h"

namespace tavrix::dialogs_program {
namespace {

/// A modal form tells its owner when it has drawn itself and waits.
class Host {
  public:
    explicit Host(std::optional<std::filesystem::path> picture) : picture_(std::move(picture)) {
        WNDCLASSW window_class{};
        window_class.lpfnWndProc = &Host::procedure;
        window_class.lpszClassName = L"TavrixDialogs";
        window_class.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_APPWORKSPACE + 1);
        window_class.hCursor = LoadCursorW(nullptr, MAKEINTRESOURCEW(32512 /* the arrow */));
        RegisterClassW(&window_class);
        window_ =
            CreateWindowExW(0, window_class.lpszClassName, L"Program handlowy", WS_OVERLAPPEDWINDOW,
                            0, 0, 640, 480, nullptr, nullptr, nullptr, nullptr);
        SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
        SetWindowPos(window_, nullptr, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_SHOWWINDOW);
        SetForegroundWindow(window_);
    }
    ~Host() { DestroyWindow(window_); }
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

  private:
    static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
        auto* host = reinterpret_cast<Host*>(GetWindowLongPtrW(window, GWLP_USERDATA));
        if (message == WM_ENTERIDLE && wparam == MSGF_DIALOGBOX && host->picture_) {
            const HWND form = reinterpret_cast<HWND>(lparam);
            save_picture(form, *host->picture_);
            PostMessageW(form, WM_CLOSE, 0, 0);
            return 0;
        }
        return DefWindowProcW(window, message, wparam, lparam);
    }

    std::optional<std::filesystem::path> picture_;
    HWND window_ = nullptr;
};

int tell_usage() {
    std::fputs("tavrix-dialogs NAZWA [--picture PLIK.bmp]\n\nOkna:\n", stderr);
    for (const Entry& entry : entries()) {
        std::fprintf(stderr, "  %-18s %s\n", std::string(entry.name).c_str(),
                     base::to_utf8(entry.what).c_str());
    }
    return 2;
}

int run(int argument_count, wchar_t** arguments) {
    SetConsoleOutputCP(CP_UTF8);
    const bool wants_picture =
        argument_count == 4 && base::Text(u"--picture") == windows::text_from_wide(arguments[2]);
    if (argument_count != 2 && !wants_picture) return tell_usage();
    const std::string name = base::to_utf8(windows::text_from_wide(arguments[1]));
    const auto all = entries();
    const auto entry = std::ranges::find(all, name, &Entry::name);
    if (entry == all.end()) return tell_usage();
    std::optional<std::filesystem::path> picture;
    if (wants_picture) picture = arguments[3];
    const Host host(std::move(picture));
    std::puts(base::to_utf8(entry->show()).c_str());
    return 0;
}

}  // namespace
}  // namespace tavrix::dialogs_program

int wmain(int argument_count, wchar_t** arguments) {
    return tavrix::dialogs_program::run(argument_count, arguments);
}
