#pragma once

#include "com/forms/dialog.h"
#include "mail/message_form.h"

namespace tavrix::com {

/// The message form: what a message holds before it goes.
class MessageDialog final : public Dialog {
  public:
    explicit MessageDialog(const mail::MessageForm& form) noexcept;

  private:
    void on_open() override;
    void offer_sending() noexcept;

    const mail::MessageForm& form_;
};

}  // namespace tavrix::com
