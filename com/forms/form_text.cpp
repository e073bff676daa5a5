#include "com/forms/form_text.h"

#include "windows/bstr.h"

namespace tavrix::com {

ControlDevice::ControlDevice(HWND control) noexcept
    : control_(control),
      device_(GetDC(control)),
      font_before_(SelectObject(
          device_, reinterpret_cast<HFONT>(SendMessageW(control, WM_GETFONT, 0, 0)))) {}

ControlDevice::~ControlDevice() {
    if (font_before_ != nullptr) SelectObject(device_, font_before_);
    ReleaseDC(control_, device_);
}

base::Text text_of_control(HWND control) {
    base::Text text(static_cast<std::size_t>(GetWindowTextLengthW(control)) + 1, u'\0');
    text.resize(static_cast<std::size_t>(GetWindowTextW(
        control, reinterpret_cast<wchar_t*>(text.data()), static_cast<int>(text.size()))));
    return text;
}

SIZE size_of_text(HWND control, const base::Text& text, int width_px, UINT format) noexcept {
    const ControlDevice device(control);
    RECT needed = {0, 0, width_px, 0};
    DrawTextW(device.get(), windows::wide(text), static_cast<int>(text.size()), &needed,
              DT_CALCRECT | format);
    return {needed.right, needed.bottom};
}

}  // namespace tavrix::com
