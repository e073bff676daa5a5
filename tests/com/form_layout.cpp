#include "tests/com/form_layout.h"

#include "tests/com/form_user.h"
#include "windows/bstr.h"
#include "windows/gdi.h"

namespace tavrix::test {
namespace {

// What a button shows beside its text: the edge and the focus's frame inside it, the sign of one
// that is chosen among several.
LONG beside_text(HWND button) {
    const LONG kind = GetWindowLongW(button, GWL_STYLE) & BS_TYPEMASK;
    return 2 * (GetSystemMetrics(SM_CXEDGE) + 2) +
           (kind == BS_AUTORADIOBUTTON ? GetSystemMetrics(SM_CXMENUCHECK) : 0);
}

// A label breaks its lines where it must, a button where its style says so, a box of the user's
// needs a line's height.
SIZE needed_size(HWND control, LONG width_px) {
    const std::wstring control_class = class_of(control);
    const LONG beside_px = control_class == L"Button" ? beside_text(control) : 0;
    const HDC device = GetDC(control);
    RECT needed = {0, 0, width_px - beside_px, 0};
    {
        const windows::Selected font(
            device, reinterpret_cast<HFONT>(SendMessageW(control, WM_GETFONT, 0, 0)));
        const base::Text text = control_class == L"Edit" ? u"Ąy" : text_of(control);
        const UINT mnemonics =
            (GetWindowLongW(control, GWL_STYLE) & SS_NOPREFIX) != 0 && control_class == L"Static"
                ? DT_NOPREFIX
                : 0;
        const bool broken_button =
            control_class == L"Button" && (GetWindowLongW(control, GWL_STYLE) & BS_MULTILINE) != 0;
        const UINT lines = control_class == L"Static" ? DT_WORDBREAK | DT_EDITCONTROL
                           : broken_button            ? DT_WORDBREAK
                                                      : DT_SINGLELINE;
        DrawTextW(device, windows::wide(text), -1, &needed, DT_CALCRECT | lines | mnemonics);
    }
    ReleaseDC(control, device);
    return {needed.right + beside_px, needed.bottom};
}

RECT place_of(HWND window) {
    RECT place{};
    GetWindowRect(window, &place);
    return place;
}

}  // namespace

void expect_on_the_screen(HWND form) {
    const RECT place = place_of(form);
    RECT room{};
    RECT common{};
    SystemParametersInfoW(SPI_GETWORKAREA, 0, &room, 0);
    EXPECT_TRUE(IntersectRect(&common, &place, &room) && EqualRect(&common, &place));
}

void expect_readable_layout(HWND form) {
    expect_on_the_screen(form);
    RECT inside{};
    GetClientRect(form, &inside);
    MapWindowPoints(form, nullptr, reinterpret_cast<POINT*>(&inside), 2);
    std::vector<HWND> controls = controls_of(form);
    // One of several may stand in the same place.
    std::erase_if(controls, [](HWND control) { return !IsWindowVisible(control); });
    // A list's head belongs to the list.
    std::erase_if(controls, [&](HWND control) { return GetParent(control) != form; });
    for (std::size_t i = 0; i < controls.size(); ++i) {
        const HWND control = controls[i];
        SCOPED_TRACE(base::to_utf8(text_of(control)));
        RECT room{};
        GetClientRect(control, &room);
        const SIZE needed = needed_size(control, room.right);
        EXPECT_LE(needed.cx, room.right);
        EXPECT_LE(needed.cy, room.bottom);

        const RECT place = place_of(control);
        RECT common{};
        EXPECT_TRUE(IntersectRect(&common, &place, &inside) && EqualRect(&common, &place));
        for (std::size_t j = 0; j < i; ++j) {
            const RECT other = place_of(controls[j]);
            EXPECT_FALSE(IntersectRect(&common, &place, &other))
                << "lies on: " << base::to_utf8(text_of(controls[j]));
        }
    }
}

}  // namespace tavrix::test
