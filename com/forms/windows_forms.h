#pragma once

#include "ports/forms.h"

namespace tavrix::com {

/// The library's own windows on the user's desktop. One form of each kind at a time in the whole
/// process, whichever object shows it.
class WindowsForms final : public ports::Forms {
  public:
    void show_about(const ports::AboutBox& box) noexcept override;
    void show_message_form(const ports::MessageForm& form) noexcept override;
};

}  // namespace tavrix::com
