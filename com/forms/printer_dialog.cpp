#include "com/forms/printer_dialog.h"

#include <algorithm>

#include "com/forms/form_text.h"
#include "com/forms/forms.h"
#include "com/forms/identifiers.h"
#include "windows/bstr.h"

namespace tavrix::com {
namespace {

FormPlace printer_place;

class PrinterChoiceOnDesktop final : public dialogs::PrinterWindow {
  public:
    std::optional<base::Text> show(const dialogs::PrinterChoiceForm& form) noexcept override {
        PrinterDialog dialog(form);
        dialog.show_in(printer_place);
        return dialog.choice();
    }
};

}  // namespace

std::unique_ptr<dialogs::PrinterWindow> make_printer_window() {
    return std::make_unique<PrinterChoiceOnDesktop>();
}

PrinterDialog::PrinterDialog(const dialogs::PrinterChoiceForm& form) noexcept
    : Dialog(TAVRIX_PRINTER_FORM), form_(form) {}

void PrinterDialog::on_open() {
    if (form_.rows.empty()) {
        set_text(TAVRIX_PRINTER_LABEL, form_.note);
        EnableWindow(control(TAVRIX_PRINTER_LIST), FALSE);
        EnableWindow(control(IDOK), FALSE);
        // The button that Enter presses.
        SendMessageW(window(), DM_SETDEFID, IDCANCEL, 0);
        SetFocus(control(IDCANCEL));
        return;
    }
    fill_list();
    SetFocus(control(TAVRIX_PRINTER_LIST));
}

void PrinterDialog::fill_list() {
    const HWND list = control(TAVRIX_PRINTER_LIST);
    LONG widest_px = 0;
    for (const auto& row : form_.rows) {
        SendMessageW(list, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(windows::wide(row.shown)));
        widest_px =
            std::max(widest_px, size_of_text(list, row.shown, 0, DT_SINGLELINE | DT_NOPREFIX).cx);
    }
    // Names of servers' printers are long.
    SendMessageW(list, LB_SETHORIZONTALEXTENT, static_cast<WPARAM>(widest_px + pixels(4, 0).cx), 0);
    SendMessageW(list, LB_SETCURSEL, *form_.chosen, 0);
}

void PrinterDialog::on_command(int id, int notification) {
    if (id == IDCANCEL) {
        close();
    } else if (id == IDOK || (id == TAVRIX_PRINTER_LIST && notification == LBN_DBLCLK)) {
        choose();
    }
}

void PrinterDialog::choose() {
    const LRESULT chosen = SendMessageW(control(TAVRIX_PRINTER_LIST), LB_GETCURSEL, 0, 0);
    if (chosen == LB_ERR) return;
    choice_ = form_.rows[static_cast<std::size_t>(chosen)].name;
    close();
}

}  // namespace tavrix::com
