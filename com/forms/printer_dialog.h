#pragma once

#include "com/forms/dialog.h"
#include "dialogs/printer_choice.h"

namespace tavrix::com {

/// The printer choice.
class PrinterDialog final : public Dialog {
  public:
    explicit PrinterDialog(const dialogs::PrinterChoiceForm& form) noexcept;
    /// What was chosen, when the form is closed.
    const std::optional<base::Text>& choice() const noexcept { return choice_; }

  private:
    void on_open() override;
    void on_command(int id, int notification) override;
    void fill_list();
    void choose();

    const dialogs::PrinterChoiceForm& form_;
    std::optional<base::Text> choice_;
};

}  // namespace tavrix::com
