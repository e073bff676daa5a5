#pragma once

#include "com/forms/dialog.h"
#include "frame/about_box.h"
#include "windows/gdi.h"

namespace tavrix::com {

/// The About box.
class AboutDialog final : public Dialog {
  public:
    explicit AboutDialog(const frame::AboutBox& box) noexcept;

  private:
    void on_open() override;
    void on_command(int id, int notification) override;
    std::optional<INT_PTR> on_message(UINT message, WPARAM wparam, LPARAM lparam) override;
    void enlarge_title();

    const frame::AboutBox& box_;
    windows::GdiFont title_font_;
};

}  // namespace tavrix::com
