#pragma once

#include <chrono>

#include "mail/outgoing/outgoing_message.h"
#include "mail/smtp/dialogue.h"
#include "ports/stream.h"

namespace tavrix::mail::smtp {

/// What a sending has come to.
enum class Stage { attaching_files, sending, leaving, sent };

/// Whoever wants to know how a message is getting on, and may stop it.
class SendingListener {
  public:
    virtual ~SendingListener() = default;
    virtual void on_stage(Stage stage) = 0;
    /// Called at least every 100 ms while the network is waited for. False gives up.
    virtual bool goes_on(std::uint64_t sent_bytes, std::uint64_t all_bytes) = 0;
};

struct Server {
    std::string host;
    std::uint16_t port = 0;
    ports::Security security = ports::Security::none;
};

/// How long a server may keep us waiting.
struct Patience {
    std::chrono::milliseconds connect{30'000};
    /// For an answer, and for taking what is sent.
    std::chrono::milliseconds answer{60'000};
    /// For what becomes of the message (RFC 5321, section 4.5.3.2.6): whoever gives up earlier
    /// takes a message for lost that has arrived, and sends it again.
    std::chrono::milliseconds verdict{600'000};
    std::chrono::milliseconds good_bye{5'000};
};

/// Hands a message over to a server. Gives the empty text when the server has taken it, otherwise
/// why it has not.
base::Text send(ports::Stream& stream, const Server& server, Dialogue dialogue,
                outgoing::OutgoingMessage& message, const Patience& patience,
                SendingListener& listener);

}  // namespace tavrix::mail::smtp
