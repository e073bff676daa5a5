#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "base/secret.h"
#include "ksef/json.h"
#include "ksef/ports.h"

namespace tavrix::ksef {

/// Whether a whole answer with exactly this status arrived.
inline bool answered(const ports::HttpReply& reply, int status) {
    return reply.completed && reply.status == status;
}

/// The text of a failure: the reply's body when it has one, else the step's prefix and `code`.
base::Text failure_text(const ports::HttpReply& reply, base::TextView prefix, base::TextView code);
/// The same with the HTTP status in decimal behind the prefix.
base::Text failure_text(const ports::HttpReply& reply, base::TextView prefix);

/// One path segment, percent-encoded (RFC 3986, 3.3): what a server or host gave stays one segment.
base::SecretUtf8 secret_path_segment(std::string_view text);
/// The same for what is no secret.
std::string path_segment(std::string_view text);

/// What an instance of KseF_comm keeps between the steps of a call and hands on to its next call:
/// the base address, the HTTP client with its persistent headers, the keys and the tokens.
class Client {
  public:
    explicit Client(KsefPorts& ports) : ports_(ports) {}
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    /// Begins a call of the host: chooses the service's base address, and the time runs. A request
    /// after half an hour throws base::AutomationError, and none lasts longer than until then: the
    /// waits for the service add up to 13 minutes, and the tokens do not live much longer.
    void begin_call(std::int32_t environment);
    /// The half hour begins anew: for each step of a call whose work grows with the host's data.
    void renew_time();
    /// Until the next call begins, a `Retry-After` of up to a minute is waited out whatever the
    /// settings say.
    void honour_retry_after();

    /// All of them wait and ask again, three times at most, where the service says when, by 429 and
    /// `Retry-After`, and the settings let them wait for so long.
    ///
    /// `path` begins with "/api/v2"; settings may put another root in its place.
    ports::HttpReply get(std::string_view path, std::vector<ports::HttpHeader> headers = {});
    ports::HttpReply post(std::string_view path, const Body& body);
    /// What must not arrive twice, although its answer may get lost.
    ports::HttpReply post_once(std::string_view path, const Body& body);
    /// An address out of an answer. The Bearer header never goes along: a storage address carries
    /// its permission in itself, and whoever else is named there must not see the token. An address
    /// that the HTTP client refuses, or one not encrypted although the service is, is not fetched.
    ports::HttpReply get_address(std::string_view url);
    /// What `source` gives to an address out of an answer, under the same conditions, by the method
    /// of the answer, over an HTTP client of its own; `headers` are all there are. It lasts as long
    /// as something moves, but no longer than a session of the service. May be called by several
    /// threads at once.
    ports::HttpReply upload(const std::string& method, std::string_view url,
                            std::vector<ports::HttpHeader> headers,
                            ports::BodySource& source) const;
    /// Puts the call's end off by what an upload took: its length is the package's, not the
    /// service's.
    void put_off_end(std::chrono::milliseconds duration) { call_ends_at_ += duration; }
    /// Sets the persistent header Authorization.
    void set_bearer(const base::SecretUtf8& token);
    /// POST to the online session's close with the authentication token and a blank where a session
    /// reference would stand. Servers answer it with an error, which is ignored; it is sent because
    /// the service's logs of this client have always shown it.
    void close_with_authentication_token();

    base::Text base_url;
    base::SecretUtf8 authentication_token;
    std::string session_reference;
    std::string encrypted_token;
    /// PEM of the service's key for symmetric keys; empty until an authentication has read one.
    std::string symmetric_key_pem;
    base::SecretUtf8 access_token;
    base::SecretUtf8 refresh_token;
    /// HTTP status of the last answer, 0 when none came.
    int last_status = 0;
    /// Of the KSeF token that GetToken asked for last.
    std::string token_reference;

  private:
    ports::Http& http();
    static constexpr int repeats_of_429 = 3;
    ports::HttpReply send(ports::HttpRequest request, bool with_authorization,
                          int most_repeats = repeats_of_429);
    base::SecretUtf8 url_of(std::string_view path) const;
    bool may_reach(const ports::Http& http, std::string_view url) const;

    std::optional<std::chrono::seconds> pause_before_repeating(const ports::HttpReply& reply) const;

    KsefPorts& ports_;
    std::unique_ptr<ports::Http> http_;
    std::chrono::milliseconds call_ends_at_{0};
    std::chrono::seconds least_patience_{0};
    base::SecretUtf8 authorization_;
};

}  // namespace tavrix::ksef
