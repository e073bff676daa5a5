#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/secret.h"

namespace tavrix::ports {

struct HttpHeader {
    std::string name;
    std::string value;
};

/// A body that is made while it is sent.
class BodySource {
  public:
    virtual ~BodySource() = default;
    /// How many bytes there will be; the request announces it.
    virtual std::uint64_t size() const = 0;
    /// Writes the next bytes to the beginning of `buffer` and gives their number, which is 0 only
    /// at the end. What it throws ends the transfer before the body is whole, and `send` with it.
    virtual std::size_t read(std::span<std::uint8_t> buffer) = 0;
};

struct HttpRequest {
    std::string method;  ///< "GET", "POST", ...
    /// Absolute, http or https, already percent-encoded. May carry a token or a permission.
    base::SecretUtf8 url;
    std::string body{};  ///< sent with every method but GET, also when empty
    std::vector<HttpHeader> headers{};
    base::SecretUtf8 authorization{};  ///< the header of that name; empty for none
    /// The service must not get it twice. A connection that was used before may turn out dead when
    /// all has been sent, and the client would then send again by itself; so it goes over a new
    /// one.
    bool only_once = false;
    /// From the call to the end of the answer, however much moves meanwhile; none for no end.
    std::optional<std::chrono::milliseconds> time_limit{};
    /// Sent in the place of `body`, once: a request that would have to be sent again fails.
    BodySource* source = nullptr;
};

struct HttpReply {
    /// True when a whole answer arrived, whatever its status. False after a refused or broken
    /// connection, a time-out, an unverifiable peer or a body over the limit; `status` and `body`
    /// then hold what came before.
    bool completed = false;
    int status = 0;         ///< 0 when no status line arrived
    base::SecretUtf8 body;  ///< may hold tokens
    std::vector<HttpHeader> headers;
    std::string error;  ///< the transport's own words when not completed
};

/// What an address is that somebody else wrote.
enum class AddressKind {
    refused,  ///< none that can be trusted to mean to everybody what it means to the client
    http,
    https,
};

/// One HTTP client with its connections, which it keeps alive between requests. Belongs to one
/// instance of a public class and to one thread.
///
/// Verifies peer and host on every TLS connection (1.2 or newer), follows no redirect (a Bearer
/// header must not travel to a host that an answer names), speaks only http and https, gives up
/// connecting after 30 s and a transfer that makes no progress for 60 s (both settings), and
/// refuses a body of more than 64 MiB: a 32-bit host has 2 GB for everything.
class Http {
  public:
    virtual ~Http() = default;
    /// Never throws for what the network or the server does; that is in the reply. Throws
    /// base::AutomationError for a method or a header that holds the end of a line, and what a
    /// body's source throws.
    virtual HttpReply send(const HttpRequest& request) = 0;
    /// Reads `url` as `send` would. Refused is what is not http(s), what names a user, and what
    /// parsers disagree about: backslashes, blanks, control characters and what is not ASCII.
    virtual AddressKind kind_of(std::string_view url) const = 0;
};

using HttpFactory = std::function<std::unique_ptr<Http>()>;

}  // namespace tavrix::ports
