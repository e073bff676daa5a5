#include "ksef/authentication.h"

#include <memory>

#include "base/base64.h"
#include "base/error.h"
#include "ksef/encoding.h"
#include "ksef/exchange.h"

namespace tavrix::ksef {
namespace {

using base::Text;
using ports::HttpReply;
using namespace std::chrono_literals;

constexpr int most_status_polls = 16;
constexpr auto status_poll_pause = 2000ms;
constexpr std::u16string_view success_description = u"Uwierzytelnianie zakończone sukcesem";

// The service's certificates come as bare Base64. It is not wrapped: the readers take a line of any
// length.
std::string pem_of(const std::string& base64) {
    return "-----BEGIN CERTIFICATE-----\r\n" + base64 + "\r\n-----END CERTIFICATE-----";
}

class Authentication : Exchange {
  public:
    // Without the last letter: hosts compare with it.
    Authentication(KsefPorts& ports, Client& client) : Exchange(ports, client, u"Nieznany błą") {}

    Text run(const Text& tax_number, const base::SecretText& token) {
        return outcome_of([&] {
            if (!request_challenge()) return;
            read_public_keys();
            encrypt_token(token);
            if (request_token(tax_number) && !(wait_until_authenticated() && redeem())) {
                client_.close_with_authentication_token();
            }
        });
    }

  private:
    bool request_challenge() {
        const HttpReply reply = client_.post("/api/v2/auth/challenge", Body::object());
        // Only the transport's failure is one here; an error status shows as a missing timestamp.
        if (!reply.completed) return fail(failure_text(reply, u"auth/challenge:STATUS:"));
        const Json answer = parse_json(reply.body.view());
        challenge_ = utf8_at(answer, "challenge");
        timestamp_ms_ = timestamp_to_unix_ms(text_at(answer, "timestamp"));
        return true;
    }

    // Each usage is compared as the exact array of one; while keys rotate a usage has several
    // certificates, and the last one counts. One that cannot be read is passed over: a missing key
    // shows at the encryption.
    void read_public_keys() {
        client_.symmetric_key_pem.clear();
        const Json list =
            parse_json(client_.get("/api/v2/security/public-key-certificates").body.view());
        if (!list.is_array()) return;
        for (const Json& element : list) {
            const std::string certificate = utf8_at(element, "certificate");
            if (certificate.empty()) continue;
            const std::string usage = json_at(element, "usage").dump();
            if (usage == R"(["SymmetricKeyEncryption"])") {
                if (const auto key = read_key(certificate)) client_.symmetric_key_pem = key->pem();
            } else if (usage == R"(["KsefTokenEncryption"])") {
                if (auto key = read_key(certificate)) token_key_ = std::move(key);
            }
        }
    }

    std::unique_ptr<ports::PublicKey> read_key(const std::string& certificate) {
        try {
            return ports_.crypto.key_of_certificate(pem_of(certificate));
        } catch (const base::AutomationError&) {
            return nullptr;
        }
    }

    void encrypt_token(const base::SecretText& token) {
        if (!token_key_) {
            throw base::AutomationError(base::ErrorNumber::component_failed, u"KseF_comm",
                                        u"Brak klucza publicznego KsefTokenEncryption");
        }
        base::SecretUtf8 plain = base::to_secret_utf8(token.view());
        plain += '|';
        plain += base::to_utf8(timestamp_ms_);
        client_.encrypted_token = base::base64_encode(
            ports_.crypto.rsa_oaep_sha256_encrypt(*token_key_, base::bytes_of(plain.view())));
    }

    bool request_token(const Text& tax_number) {
        Body body;
        body["challenge"] = challenge_;
        body["contextIdentifier"]["type"] = "Nip";
        body["contextIdentifier"]["value"] = base::to_utf8(tax_number);
        body["encryptedToken"] = client_.encrypted_token;
        HttpReply reply = client_.post("/api/v2/auth/ksef-token", body);
        if (!answered(reply, 202))
            return fail(failure_text(reply, u"auth/ksef-token:STATUS:", u"timeout"));
        SecretAnswer answer = parse_secret_json(reply.body, {"authenticationToken.token"});
        client_.authentication_token = std::move(answer.secrets[0]);
        reference_ = utf8_at(answer.rest, "referenceNumber");
        client_.set_bearer(client_.authentication_token);
        return true;
    }

    bool wait_until_authenticated() {
        HttpReply reply;
        for (int round = 0; round < most_status_polls; ++round) {
            reply = client_.get("/api/v2/auth/" + path_segment(reference_));
            if (!answered(reply, 200))
                return fail(failure_text(reply, u"auth/:STATUS:", u"timeout"));
            const Json answer = parse_json(reply.body.view());
            if (says_success(reply, answer)) return true;
            if (utf8_at(answer, "status.code") == "450") {
                return fail(failure_text(reply, u"status.code:STATUS:", u"450"));
            }
            ports_.clock.sleep(status_poll_pause);
        }
        return fail(failure_text(reply, u"sessions/online:STATUS:"));
    }

    // The description's letters may be written as escapes in the body, so the read value counts as
    // well.
    static bool says_success(const HttpReply& reply, const Json& answer) {
        const auto contains = [](const Text& text) {
            return base::find_case_blind(text, success_description) != Text::npos;
        };
        return contains(base::from_utf8(reply.body.view())) ||
               contains(text_at(answer, "status.description"));
    }

    bool redeem() {
        client_.set_bearer(client_.authentication_token);
        HttpReply reply = client_.post("/api/v2/auth/token/redeem", Body::object());
        if (!answered(reply, 200)) return fail(failure_text(reply, u"auth/token/redeem:STATUS:"));
        SecretAnswer answer =
            parse_secret_json(reply.body, {"accessToken.token", "refreshToken.token"});
        client_.access_token = std::move(answer.secrets[0]);
        client_.refresh_token = std::move(answer.secrets[1]);
        client_.set_bearer(client_.access_token);
        result_.clear();
        return true;
    }

    std::string challenge_;
    Text timestamp_ms_;
    std::unique_ptr<ports::PublicKey> token_key_;
    std::string reference_;
};

}  // namespace

Text authenticate(KsefPorts& ports, Client& client, const Text& tax_number,
                  const base::SecretText& token) {
    return Authentication(ports, client).run(tax_number, token);
}

}  // namespace tavrix::ksef
