#include "com/forms/about_dialog.h"

#include "com/forms/emblem.h"
#include "com/forms/forms.h"
#include "com/forms/identifiers.h"
#include "windows/bstr.h"

namespace tavrix::com {
namespace {

FormPlace about_place;

class AboutOnDesktop final : public frame::AboutWindow {
  public:
    void show(const frame::AboutBox& box) noexcept override {
        AboutDialog(box).show_in(about_place);
    }
};

}  // namespace

std::unique_ptr<frame::AboutWindow> make_about_window() {
    return std::make_unique<AboutOnDesktop>();
}

AboutDialog::AboutDialog(const frame::AboutBox& box) noexcept
    : Dialog(TAVRIX_ABOUT_FORM), box_(box) {}

void AboutDialog::on_open() {
    SetWindowTextW(window(), windows::wide(u"O programie " + box_.title));
    set_text(TAVRIX_ABOUT_TITLE, box_.title);
    set_text(TAVRIX_ABOUT_VERSION, u"Wersja " + box_.version);
    set_text(TAVRIX_ABOUT_DESCRIPTION, box_.description);
    enlarge_title();
    for (const int id : {TAVRIX_ABOUT_TITLE, TAVRIX_ABOUT_VERSION, TAVRIX_ABOUT_DESCRIPTION}) {
        grow_to_text(id);
    }
}

void AboutDialog::on_command(int id, int) {
    if (id == TAVRIX_ABOUT_SYSTEM_INFORMATION) {
        box_.show_system_information();
    } else if (id == IDOK || id == IDCANCEL) {
        close();
    }
}

std::optional<INT_PTR> AboutDialog::on_message(UINT message, WPARAM, LPARAM lparam) {
    if (message != WM_DRAWITEM) return {};
    const auto& item = *reinterpret_cast<const DRAWITEMSTRUCT*>(lparam);
    draw_emblem(item.hDC, item.rcItem);
    return TRUE;
}

// Half as large again as the form's own font, and bold.
void AboutDialog::enlarge_title() {
    const HWND title = control(TAVRIX_ABOUT_TITLE);
    LOGFONTW font{};
    GetObjectW(reinterpret_cast<HFONT>(SendMessageW(title, WM_GETFONT, 0, 0)), sizeof font, &font);
    font.lfHeight = font.lfHeight * 3 / 2;
    font.lfWeight = FW_BOLD;
    title_font_.reset(CreateFontIndirectW(&font));
    SendMessageW(title, WM_SETFONT, reinterpret_cast<WPARAM>(title_font_.get()), FALSE);
}

}  // namespace tavrix::com
