#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "base/text.h"
#include "ksef/json.h"
#include "ksef/ksef_comm.h"
#include "ports/http.h"

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
std::string path_segment(std::string_view text);

/// What an instance of KseF_comm keeps between the steps of a call and hands on to its next call:
/// the base address, the HTTP client with its persistent headers, the keys and the tokens. Wipes
/// the tokens.
class ClientState {
  public:
    explicit ClientState(KsefPorts& ports) : ports_(ports) {}
    ~ClientState();
    ClientState(const ClientState&) = delete;
    ClientState& operator=(const ClientState&) = delete;

    void select_environment(std::int32_t environment);

    /// `path` begins with "/api/v2"; settings may put another root in its place.
    ports::HttpReply get(const std::string& path);
    ports::HttpReply post(const std::string& path, const Json& body);
    /// An address out of an answer. The Bearer header goes along only to the service's own origin:
    /// a storage address carries its permission in itself, and any other host must not see the
    /// token. An address that is not http(s), or not encrypted although the service is, is not
    /// fetched.
    ports::HttpReply get_address(const std::string& url);
    /// Sets the persistent header Authorization.
    void set_bearer(const std::string& token);
    /// POST to the online session's close with the authentication token and a blank where a session
    /// reference would stand. Servers answer it with an error, which is ignored; it is sent because
    /// the service's logs of this client have always shown it.
    void close_with_authentication_token();

    base::Text base_url;
    std::string authentication_token;
    std::string session_reference;
    std::string encrypted_token;
    /// PEM of the service's key for symmetric keys; empty until an authentication has read one.
    std::string symmetric_key_pem;
    std::string access_token;
    std::string refresh_token;

  private:
    ports::HttpReply send(std::string method, std::string url, std::string body,
                          bool with_authorization);
    std::string url_of(const std::string& path) const;

    KsefPorts& ports_;
    std::unique_ptr<ports::Http> http_;
    std::string authorization_;
};

/// Replaces a token, wiping the old one.
void replace_secret(std::string& secret, std::string value);

}  // namespace tavrix::ksef
