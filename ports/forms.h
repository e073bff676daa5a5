#pragma once

#include <array>
#include <cstdint>
#include <functional>

#include "base/text.h"

namespace tavrix::ports {

/// What the About box shows and does.
struct AboutBox {
    /// The product's name; the form says around it what it is.
    base::Text title;
    /// The number alone.
    base::Text version;
    /// A few lines, separated by line feeds.
    base::Text description;
    /// What the system-information button does. Must not throw.
    std::function<void()> show_system_information;
};

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
    /// The status line's first text.
    base::Text status;
    /// False leaves the user nothing but to close the form.
    bool can_send = false;
};

/// The library's own windows: modal forms over the host's active window. Each call returns when its
/// form was closed, in whichever way. The messages of the caller's thread go on being delivered
/// meanwhile, so a host can call again: a form that is open already comes to the front and the
/// second call returns at once. Nothing throws; a form that cannot be shown is not shown.
class Forms {
  public:
    virtual ~Forms() = default;
    virtual void show_about(const AboutBox& box) noexcept = 0;
    virtual void show_message_form(const MessageForm& form) noexcept = 0;
};

}  // namespace tavrix::ports
