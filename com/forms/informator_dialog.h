#pragma once

#include <vector>

#include "com/forms/dialog.h"
#include "dialogs/button_rows.h"
#include "dialogs/informator.h"

namespace tavrix::com {

/// Both informators. The form is as large as what the host gave it, up to a share of the screen;
/// then the text scrolls and the captions are cut.
class InformatorDialog final : public Dialog {
  public:
    explicit InformatorDialog(const dialogs::InformatorForm& form) noexcept;
    /// What was chosen, when the form is closed.
    const std::optional<dialogs::InformatorChoice>& choice() const noexcept { return choice_; }

  private:
    struct Column;

    void on_open() override;
    void on_command(int id, int notification) override;
    bool on_key(UINT key) override;

    void make_outcomes();
    void make_buttons();
    HWND make_button(const base::Text& caption, int id, DWORD style);
    void take_away(int id) noexcept { DestroyWindow(control(id)); }

    void lay_out();
    int chosen_width(int widest_px);
    int text_width(HWND measured_by, const base::Text& text) const;
    void add_heading(Column& column, int width_px);
    void add_text(Column& column, int width_px, int most_height_px);
    void add_order(Column& column, int width_px);
    void add_buttons(Column& column, int width_px, int most_height_px);
    dialogs::PixelSize fit_caption(std::size_t index, std::size_t characters, int widest_px);

    const dialogs::InformatorForm& form_;
    std::vector<HWND> outcomes_;
    std::vector<HWND> buttons_;
    std::optional<dialogs::InformatorChoice> choice_;
};

}  // namespace tavrix::com
