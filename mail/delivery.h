#pragma once

#include <functional>
#include <memory>

#include "base/secret.h"
#include "mail/smtp/sender.h"
#include "ports/connection_settings.h"

namespace tavrix::mail {

/// Everything outside that sending a message reaches. The references outlive whoever has them.
struct DeliveryPorts {
    outgoing::ComposingPorts composing;
    std::function<std::unique_ptr<ports::Stream>(const ports::ConnectionSettings&)> make_stream;
    /// Asked by each call; throws base::AutomationError with what is wrong with the settings file.
    std::function<ports::ConnectionSettings()> connection;
};

/// Where a message is handed in, and as whom.
struct Account {
    base::Text host;
    std::int32_t port = 25;
    ports::Security security = ports::Security::none;
    /// Empty for a server that asks for none.
    base::Text user;
    base::SecretText password;
};

/// TLS from the first byte on the port that knows nothing else, 465, and where `ssl` asks for it
/// the server's own command on any other: a server without it gets neither password nor message.
ports::Security security_of(std::int32_t port, bool ssl) noexcept;

/// Nobody to tell.
class Unheard final : public smtp::SendingListener {
  public:
    void on_stage(smtp::Stage) override {}
    bool goes_on(std::uint64_t, std::uint64_t) override { return true; }
};

/// Sends one message to everybody it is for, or to nobody. Gives the empty text when the server
/// took it, otherwise the reason with the server's own words. Throws base::AutomationError for what
/// cannot even be tried: no recipient, a file that cannot be read.
///
/// `notify` as smtp::Envelope has it.
base::Text deliver(const DeliveryPorts& ports, const Account& account, const outgoing::Draft& draft,
                   const std::string& notify, smtp::SendingListener& listener);

}  // namespace tavrix::mail
