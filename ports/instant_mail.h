#pragma once

#include "base/secret.h"

namespace tavrix::ports {

/// One message and the server that is to send it, as a host gives them.
struct InstantMail {
    base::Text to;
    base::Text subject;
    base::Text from;
    base::Text body;
    bool body_is_html = false;
    /// Path; empty for none.
    base::Text file;
    base::Text server;
    std::int16_t port = 25;
    base::Text user;
    base::SecretText password;
    bool ssl = false;
};

/// Sends a message at once, without a window.
class InstantMailer {
  public:
    virtual ~InstantMailer() = default;
    /// Returns when the server has the message; throws base::AutomationError with the reason, which
    /// is shown to users as it stands.
    virtual void send(const InstantMail& mail) = 0;
};

}  // namespace tavrix::ports
