#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "base/text.h"
#include "ports/printers.h"

namespace tavrix::dialogs {

/// What the printer choice shows.
struct PrinterChoiceForm {
    struct Row {
        /// What the choice gives.
        base::Text name;
        base::Text shown;
        bool operator==(const Row&) const = default;
    };

    /// By name.
    std::vector<Row> rows;
    /// The default printer, else the first one; none where there are no rows.
    std::optional<std::size_t> chosen;
    /// Why there are none; empty where there are.
    base::Text note;
};

PrinterChoiceForm printer_choice_form(const ports::PrinterList& list);

/// The printer choice on the user's desktop: modal, and open once.
class PrinterWindow {
  public:
    virtual ~PrinterWindow() = default;
    /// The chosen printer's name; none when the window was closed without a choice, or could not be
    /// shown. The system's default printer stays what it is.
    virtual std::optional<base::Text> show(const PrinterChoiceForm& form) noexcept = 0;
};

}  // namespace tavrix::dialogs
