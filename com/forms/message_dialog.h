#pragma once

#include "com/forms/dialog.h"
#include "mail/message_form.h"

namespace tavrix::com {

/// The message form: what a message holds before it goes, and how it goes. While it is sent the
/// thread's messages are delivered, and closing the form gives the sending up.
class MessageDialog final : public Dialog, private mail::smtp::SendingListener {
  public:
    explicit MessageDialog(const mail::MessageForm& form) noexcept;

  private:
    void on_open() override;
    void on_command(int id, int notification) override;
    void on_stage(mail::smtp::Stage stage) override;
    bool goes_on(std::uint64_t sent_bytes, std::uint64_t all_bytes) override;
    void send();
    void show_status(const base::Text& text);

    const mail::MessageForm& form_;
    bool sending_ = false;
};

}  // namespace tavrix::com
