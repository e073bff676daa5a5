// A KSeF client as small as the tests need it. It encrypts with the library's cryptography, which
// the sandbox decrypts with its own.
#pragma once

#include <httplib.h>

#include <map>
#include <memory>
#include <string>

#include "sandbox/basics/json.h"

namespace tavrix::sandbox::testing {

struct Reply {
    /// 0 when there was no answer.
    int status = 0;
    std::string body;
    httplib::Headers headers;

    /// The body as JSON; null when it is none.
    Json json() const { return read_json(body).value_or(Json()); }
    /// First exception code of an error body; 0 when there is none.
    int exception_code() const;
    std::string header(const std::string& name) const;
};

/// What a bare socket receives for some bytes until the connection ends, and how it ended.
struct RawReply {
    std::string data;
    int error = 0;
};
/// \param last closes the sending side after the bytes, so that the server ends what it would keep.
RawReply raw_exchange(int port, const std::string& bytes, bool last = false);

std::string token_of(const std::string& nip);

class Client {
  public:
    /// \param root `/v2` or `/api/v2`.
    explicit Client(int port, std::string root = "/v2");

    Reply get(const std::string& path) { return reply_to(http_->Get(root_ + path, all_headers())); }
    Reply remove(const std::string& path) {
        return reply_to(http_->Delete(root_ + path, all_headers()));
    }
    Reply post_text(const std::string& path, const std::string& body) {
        return reply_to(http_->Post(root_ + path, all_headers(), body, "application/json"));
    }
    Reply post(const std::string& path, const Json& body = Json::object()) {
        return post_text(path, dump(body));
    }
    /// An address as an answer gives it, without the bearer token.
    Reply download(const std::string& url) {
        return reply_to(http_->Get(url.substr(url.find('/', url.find("//") + 2))));
    }

    /// Extra headers of every request from now on.
    std::map<std::string, std::string> headers;
    /// Sent as Bearer when not empty.
    std::string bearer;

    // The steps of signing in, each with what it needs of the earlier ones.
    Json challenge() { return post("/auth/challenge").json(); }
    /// The newest published one.
    std::string certificate(const std::string& usage);
    /// \param certificate the newest published one when empty.
    Reply send_token(const std::string& token, const std::string& nip, const Json& challenge,
                     std::string certificate = "");
    /// All of it; afterwards `bearer` is the access token. Returns the answer to redeeming.
    Reply sign_in(const std::string& nip, const std::string& token = "");

    /// Opens a session with fresh keys; returns its reference number.
    std::string open_session();
    Json open_body(const std::string& key);
    /// The body of a sent invoice, which tests may spoil.
    Json invoice_body(const std::string& xml);
    /// Sends to the session opened last and returns the invoice's reference number.
    std::string send(const std::string& xml);
    /// Status object of an invoice of the session opened last.
    Json invoice_status(const std::string& reference) {
        return get("/sessions/" + session + "/invoices/" + reference).json().at("status");
    }

    /// The body that opens a batch session for an archive; its encrypted parts are then in `parts`.
    Json package_body(const std::string& archive, std::size_t count = 1);
    /// Opens a batch session; the addresses of its parts are then in `part_urls`.
    Reply open_package(const Json& body);
    /// To an address as an answer gives it, without the bearer token.
    Reply put(const std::string& url, const std::string& content,
              const httplib::Headers& with = {{"x-ms-blob-type", "BlockBlob"}});
    /// All of it; returns the answer to closing.
    Reply send_package(const Json& body);
    std::vector<std::string> parts, part_urls;

    /// `authorizationPolicy` of the next sign-in; null for none.
    Json policy;
    std::string session;
    std::string access_token, refresh_token, authentication_token, authentication_reference;

  private:
    httplib::Headers all_headers() const;
    static Reply reply_to(const httplib::Result& result) {
        return result ? Reply{result->status, result->body, result->headers} : Reply{};
    }

    std::string root_;
    std::unique_ptr<httplib::Client> http_;
    std::string key_, vector_;
};

}  // namespace tavrix::sandbox::testing
