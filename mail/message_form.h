#pragma once

#include <array>
#include <cstdint>
#include <functional>

#include "base/text.h"
#include "mail/smtp/sender.h"

namespace tavrix::mail {

/// What a method of the facade hands to the message form, and what the form leaves there.
struct MailRecord {
    /// What the host calls the place that the message comes from.
    base::Text source;
    base::Text tax_number;
    base::Text host_version;
    /// Empty for the account's own.
    base::Text sender;
    /// Addresses as the host joined them, by "; " where it did.
    base::Text recipients;
    base::Text subject;
    std::array<base::Text, 3> body;
    /// Paths, separated by ";".
    base::Text attachments;
    std::int32_t mode = 0;
    std::int32_t result = 0;
};

/// What the message form shows.
struct MessageForm {
    MailRecord& record;
    /// Today in the user's own format.
    base::Text date;
    /// Sends the message and leaves in the record that it went. Gives the empty text then,
    /// otherwise the reason; sending again is possible.
    std::function<base::Text(smtp::SendingListener&)> send;
};

/// What the form says while a stage lasts.
base::TextView words_of(smtp::Stage stage) noexcept;

/// The window of the message form: modal over the host's active window. Returns when the form was
/// closed, in whichever way. The messages of the caller's thread go on being delivered meanwhile,
/// so a host can call again: the form that is open comes to the front and the second call returns
/// at once. A form that cannot be shown is not shown.
class MessageWindow {
  public:
    virtual ~MessageWindow() = default;
    virtual void show(const MessageForm& form) noexcept = 0;
};

}  // namespace tavrix::mail
