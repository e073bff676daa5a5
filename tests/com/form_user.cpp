#include "tests/com/form_user.h"

#include "windows/bstr.h"

namespace tavrix::test {
namespace {

constexpr wchar_t host_class[] = L"TavrixTestHost";
constexpr UINT soon_message = WM_APP;

BOOL CALLBACK collect(HWND window, LPARAM list) {
    reinterpret_cast<std::vector<HWND>*>(list)->push_back(window);
    return TRUE;
}

}  // namespace

FormUser::FormUser() {
    WNDCLASSW window_class{};
    window_class.lpfnWndProc = &FormUser::procedure;
    window_class.lpszClassName = host_class;
    RegisterClassW(&window_class);
    window_ = CreateWindowExW(0, host_class, L"Program handlowy", WS_OVERLAPPEDWINDOW | WS_VISIBLE,
                              0, 0, 640, 480, nullptr, nullptr, nullptr, nullptr);
    SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    SetForegroundWindow(window_);
}

FormUser::~FormUser() {
    DestroyWindow(window_);
}

void FormUser::use(const std::function<void()>& show, std::vector<Step> steps) {
    steps_ = std::move(steps);
    next_step_ = 0;
    show();
    EXPECT_EQ(next_step_, steps_.size()) << "the form went before the user had done everything";
    EXPECT_TRUE(open_forms().empty());
}

void FormUser::soon(Step step) {
    soon_ = std::move(step);
    PostMessageW(window_, soon_message, 0, 0);
}

void FormUser::take_step(HWND form) {
    if (next_step_ < steps_.size()) {
        steps_[next_step_++](form);
        // The form tells again that it waits after one message at least.
        PostMessageW(form, WM_NULL, 0, 0);
    } else {
        ADD_FAILURE() << "the form is still open after the last step";
        DestroyWindow(form);
    }
}

LRESULT CALLBACK FormUser::procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    auto* user = reinterpret_cast<FormUser*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (message == WM_ENTERIDLE && wparam == MSGF_DIALOGBOX && user != nullptr) {
        user->take_step(reinterpret_cast<HWND>(lparam));
        return 0;
    }
    if (message == soon_message) {
        user->soon_(GetActiveWindow());
        return 0;
    }
    return DefWindowProcW(window, message, wparam, lparam);
}

Step press(WPARAM key) {
    return [key](HWND) {
        const HWND focused = GetFocus();
        ASSERT_NE(focused, nullptr);
        const UINT scan_code = MapVirtualKeyW(static_cast<UINT>(key), 0) << 16;
        PostMessageW(focused, WM_KEYDOWN, key, static_cast<LPARAM>(1 | scan_code));
        PostMessageW(focused, WM_KEYUP, key, static_cast<LPARAM>(1 | scan_code | 0xC0000000));
    };
}

Step press_with_alt(wchar_t letter) {
    constexpr LPARAM alt_is_down = 1 << 29;
    return [letter](HWND) {
        ASSERT_NE(GetFocus(), nullptr);
        PostMessageW(GetFocus(), WM_SYSCHAR, letter, 1 | alt_is_down);
    };
}

Step click(int control) {
    return [control](HWND form) {
        const HWND button = GetDlgItem(form, control);
        ASSERT_NE(button, nullptr);
        const LPARAM inside = MAKELPARAM(5, 5);
        PostMessageW(button, WM_LBUTTONDOWN, MK_LBUTTON, inside);
        PostMessageW(button, WM_LBUTTONUP, 0, inside);
    };
}

Step click_cross() {
    return [](HWND form) { PostMessageW(form, WM_SYSCOMMAND, SC_CLOSE, 0); };
}

std::vector<HWND> open_forms() {
    std::vector<HWND> windows;
    EnumThreadWindows(GetCurrentThreadId(), &collect, reinterpret_cast<LPARAM>(&windows));
    std::erase_if(windows, [](HWND window) { return class_of(window) != L"#32770"; });
    return windows;
}

base::Text text_of(HWND window) {
    base::Text text(static_cast<std::size_t>(GetWindowTextLengthW(window)) + 1, u'\0');
    text.resize(static_cast<std::size_t>(GetWindowTextW(
        window, reinterpret_cast<wchar_t*>(text.data()), static_cast<int>(text.size()))));
    return text;
}

std::wstring class_of(HWND window) {
    wchar_t name[16];
    GetClassNameW(window, name, 16);
    return name;
}

std::vector<HWND> controls_of(HWND form) {
    std::vector<HWND> controls;
    EnumChildWindows(form, &collect, reinterpret_cast<LPARAM>(&controls));
    return controls;
}

void expect_texts(HWND form, const std::map<int, base::Text>& texts) {
    for (const auto& [control, text] : texts) {
        EXPECT_EQ(text_of(GetDlgItem(form, control)), text) << control;
    }
}

}  // namespace tavrix::test
