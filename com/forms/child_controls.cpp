#include "com/forms/child_controls.h"

#include <cmath>

#include "windows/failure.h"
#include "windows/gdi.h"

namespace tavrix::com {
namespace {

LONG whole_pixels(double length) noexcept {
    return static_cast<LONG>(std::lround(length));
}

class ChildControl final : public dialogs::ResizedControl {
  public:
    explicit ChildControl(HWND control) noexcept : control_(control) {}

    dialogs::ControlPlace place() override {
        RECT place{};
        GetWindowRect(control_, &place);
        MapWindowPoints(nullptr, GetParent(control_), reinterpret_cast<POINT*>(&place), 2);
        return {static_cast<double>(place.left), static_cast<double>(place.top),
                static_cast<double>(place.right - place.left),
                static_cast<double>(place.bottom - place.top)};
    }

    void move(const dialogs::ControlPlace& place) override {
        // Both edges are rounded, or neighbours would drift apart.
        const LONG left = whole_pixels(place.left);
        const LONG top = whole_pixels(place.top);
        const BOOL moved = SetWindowPos(
            control_, nullptr, left, top, whole_pixels(place.left + place.width) - left,
            whole_pixels(place.top + place.height) - top, SWP_NOZORDER | SWP_NOACTIVATE);
        if (!moved) windows::throw_last_error(u"Resize");
    }

    std::optional<double> font_size() override {
        const LOGFONTW font = its_font();
        if (font.lfHeight == 0) return std::nullopt;
        return std::abs(font.lfHeight);
    }

    void set_font_size(double size) override {
        LOGFONTW wanted = its_font();
        const LONG height = whole_pixels(size);
        if (std::abs(wanted.lfHeight) == height) return;
        wanted.lfHeight = -height;
        windows::GdiFont font(CreateFontIndirectW(&wanted));
        if (!font) windows::throw_failure(E_OUTOFMEMORY, u"Resize");
        SendMessageW(control_, WM_SETFONT, reinterpret_cast<WPARAM>(font.get()), FALSE);
        font_ = std::move(font);
    }

  private:
    LOGFONTW its_font() const noexcept {
        LOGFONTW font{};
        const auto handle = reinterpret_cast<HFONT>(SendMessageW(control_, WM_GETFONT, 0, 0));
        if (handle != nullptr) GetObjectW(handle, sizeof font, &font);
        return font;
    }

    HWND control_;
    windows::GdiFont font_;
};

}  // namespace

std::vector<std::unique_ptr<dialogs::ResizedControl>> child_controls(HWND form) {
    std::vector<std::unique_ptr<dialogs::ResizedControl>> controls;
    for (HWND child = GetWindow(form, GW_CHILD); child != nullptr;
         child = GetWindow(child, GW_HWNDNEXT)) {
        controls.push_back(std::make_unique<ChildControl>(child));
    }
    return controls;
}

}  // namespace tavrix::com
