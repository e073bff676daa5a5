#pragma once

#include "com/forms/dialog.h"
#include "ports/forms.h"
#include "ports/windows/gdi.h"

namespace tavrix::com {

/// The About box.
class AboutDialog final : public Dialog {
  public:
    explicit AboutDialog(const ports::AboutBox& box) noexcept;

  private:
    void on_open() override;
    void on_command(int id) override;
    bool on_message(UINT message, WPARAM wparam, LPARAM lparam) override;
    void enlarge_title();

    const ports::AboutBox& box_;
    windows::GdiFont title_font_;
};

}  // namespace tavrix::com
