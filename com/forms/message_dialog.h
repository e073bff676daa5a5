#pragma once

#include "com/forms/dialog.h"
#include "ports/forms.h"

namespace tavrix::com {

/// The message form: what a message holds before it goes.
class MessageDialog final : public Dialog {
  public:
    explicit MessageDialog(const ports::MessageForm& form) noexcept;

  private:
    void on_open() override;
    void offer_sending() noexcept;

    const ports::MessageForm& form_;
};

}  // namespace tavrix::com
