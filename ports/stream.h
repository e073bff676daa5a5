#pragma once

#include <chrono>
#include <string>

#include "base/error.h"
#include "base/text.h"

namespace tavrix::ports {

/// The far end of a stream.
struct StreamAddress {
    std::string host;  ///< name or address, UTF-8; an IPv6 address stands without brackets
    std::uint16_t port = 0;
};

/// From where on a stream goes through TLS.
enum class Security {
    none,
    tls,  ///< from the first byte
    /// From the protocol's own command on. Greeting, offer and command are over when the connection
    /// stands, and what the server says next answers the caller's first command. A server that does
    /// not offer TLS is no far end: nothing of the caller's is said to it.
    tls_after_stls,      ///< POP3
    tls_after_starttls,  ///< SMTP; the greeting EHLO has to be said again by whoever needs its
                         ///< answer
};

/// Why a stream failed.
class StreamError : public base::AutomationError {
  public:
    StreamError(std::int32_t socket_number, base::Text description)
        : AutomationError(base::ErrorNumber::component_failed, u"Stream", std::move(description)),
          socket_number_(socket_number) {}

    /// As Windows' sockets count failures, on every system: 10060 for one that timed out, 11001 for
    /// an unknown host; 10053 for what is no socket's failure, such as a certificate.
    std::int32_t socket_number() const noexcept { return socket_number_; }

  private:
    std::int32_t socket_number_;
};

/// What one look at the stream found.
struct Received {
    enum class State {
        data,         ///< `bytes`, at least one
        nothing_yet,  ///< the whole slice passed without a byte
        /// The other side has closed its direction in an orderly way, under TLS with the word that
        /// nobody on the path can forge; stays so.
        ended,
    };
    State state = State::nothing_yet;
    base::Bytes bytes;
    /// How much of the slice this took, so that callers keep their deadlines without a clock.
    std::chrono::microseconds waited{0};
};

/// What became of the bytes that were offered.
struct Sent {
    std::size_t count = 0;  ///< how many of them, from the beginning, are on their way
    /// How much of the slice this took.
    std::chrono::microseconds waited{0};
};

/// One connection that carries bytes both ways, in the clear or through TLS 1.2 or newer, which
/// always verifies peer and host. Belongs to one instance of a public class and to one thread;
/// closes with its destruction.
///
/// No call waits for longer than its slice, so that the caller can do something in between: raise
/// an event, pump messages, give up. Deadlines and their meaning are the caller's; so is calling
/// again. Between two calls the caller may close or connect anew at any time. Two waits are the
/// system's and keep to no slice: connect() asks it for the proxy, and close() waits for a look-up
/// of a name that is under way. Its thread must not outlive the code that it runs, which may be
/// unloaded as soon as the stream is gone.
///
/// Every function but close throws StreamError with the transport's own words when the
/// connection cannot be made, breaks or is not open (any more); the stream is then closed.
class Stream {
  public:
    virtual ~Stream() = default;

    /// Closes what was open and begins to connect. Throws for an address that cannot be one. Waits
    /// for nothing but the system's word on the proxy, which takes seconds where a configuration
    /// script is searched for and not found.
    virtual void connect(const StreamAddress& address, Security security) = 0;
    /// Goes on connecting, TLS included. True as soon as the connection stands, false when the
    /// whole slice passed before.
    virtual bool connected_within(std::chrono::milliseconds slice) = 0;
    /// Sends from the beginning of `bytes`, 16 KiB at most. None are on their way when the whole
    /// slice passed before the other side took any; offer the same bytes again then.
    virtual Sent send(base::ByteView bytes, std::chrono::milliseconds slice) = 0;
    /// Gives what is there, 64 KiB at most, or what comes first within the slice.
    virtual Received receive(std::chrono::milliseconds slice) = 0;
    /// Nothing happens when nothing is open. Waits while the system is looking up a name, which it
    /// gives up after seconds.
    virtual void close() noexcept = 0;
};

}  // namespace tavrix::ports
