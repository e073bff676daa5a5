#include "tests/sandbox/client.h"

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

#include "base/text.h"
#include "ports/portable/openssl_crypto.h"
#include "sandbox/basics/crypto.h"

namespace tavrix::sandbox::testing {
namespace {

using base::bytes_of;

/// `token|ms` or an AES key under a published certificate, in Base64.
std::string encrypt_for_certificate(const std::string& certificate, const std::string& plain) {
    const auto crypto = ports::make_openssl_crypto();
    const auto key = crypto->key_of_certificate("-----BEGIN CERTIFICATE-----\n" + certificate +
                                                "\n-----END CERTIFICATE-----");
    const base::Bytes cipher = crypto->rsa_oaep_sha256_encrypt(*key, bytes_of(plain));
    return base64_encode(base::chars_of(cipher));
}

}  // namespace

int Reply::exception_code() const {
    const Json value = json();
    const Json::json_pointer code("/exception/exceptionDetailList/0/exceptionCode");
    return value.is_object() ? value.value(code, 0) : 0;
}

std::string Reply::header(const std::string& name) const {
    const auto found = headers.find(name);
    return found == headers.end() ? "" : found->second;
}

RawReply raw_exchange(int port, const std::string& bytes, bool last) {
    const int socket = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    ::connect(socket, reinterpret_cast<sockaddr*>(&address), sizeof address);
    ::send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (last) ::shutdown(socket, SHUT_WR);
    RawReply reply;
    char buffer[4096];
    ssize_t count = 0;
    while ((count = ::recv(socket, buffer, sizeof buffer, 0)) > 0)
        reply.data.append(buffer, std::size_t(count));
    if (count < 0) reply.error = errno;
    ::close(socket);
    return reply;
}

std::string token_of(const std::string& nip) {
    return "20261001-EC-220B0CE000-E228129563-96|nip-" + nip + "|" + std::string(64, 'a');
}

Client::Client(int port, std::string root)
    : root_(std::move(root)), http_(std::make_unique<httplib::Client>("127.0.0.1", port)) {
    http_->set_keep_alive(true);
    // Paths go out as the tests write them.
    http_->set_url_encode(false);
    http_->set_tcp_nodelay(true);
    http_->set_read_timeout(20);
}

httplib::Headers Client::all_headers() const {
    httplib::Headers result(headers.begin(), headers.end());
    if (!bearer.empty()) result.emplace("Authorization", "Bearer " + bearer);
    return result;
}

std::string Client::certificate(const std::string& usage) {
    std::string last;
    for (const Json& entry : get("/security/public-key-certificates").json())
        if (entry.at("usage") == Json::array({usage})) last = entry.at("certificate");
    return last;
}

Reply Client::send_token(const std::string& token, const std::string& nip, const Json& challenge,
                         std::string certificate) {
    if (certificate.empty()) certificate = this->certificate("KsefTokenEncryption");
    const std::string plain =
        token + "|" + std::to_string(challenge.at("timestampMs").get<std::int64_t>());
    const Reply reply =
        post("/auth/ksef-token", {{"challenge", challenge.at("challenge")},
                                  {"contextIdentifier", {{"type", "Nip"}, {"value", nip}}},
                                  {"encryptedToken", encrypt_for_certificate(certificate, plain)},
                                  {"authorizationPolicy", policy}});
    if (reply.status == 202) {
        authentication_reference = reply.json().at("referenceNumber");
        authentication_token = reply.json().at("authenticationToken").at("token");
    }
    return reply;
}

Reply Client::sign_in(const std::string& nip, const std::string& token) {
    bearer.clear();
    send_token(token.empty() ? token_of(nip) : token, nip, challenge());
    bearer = authentication_token;
    const Reply reply = post("/auth/token/redeem");
    if (reply.status == 200) {
        access_token = reply.json().at("accessToken").at("token");
        refresh_token = reply.json().at("refreshToken").at("token");
        bearer = access_token;
    }
    return reply;
}

Json Client::open_body(const std::string& key) {
    return {{"formCode", {{"systemCode", "FA (3)"}, {"schemaVersion", "1-0E"}, {"value", "FA"}}},
            {"encryption",
             {{"encryptedSymmetricKey",
               encrypt_for_certificate(certificate("SymmetricKeyEncryption"), key)},
              {"initializationVector", base64_encode(vector_)}}}};
}

std::string Client::open_session() {
    key_ = random_bytes(32);
    vector_ = random_bytes(16);
    const Reply reply = post("/sessions/online", open_body(key_));
    session = reply.status == 201 ? reply.json().at("referenceNumber").get<std::string>() : "";
    return session;
}

Json Client::invoice_body(const std::string& xml) {
    const base::Bytes encrypted = ports::make_openssl_crypto()->aes_256_cbc_encrypt(
        bytes_of(key_), bytes_of(vector_), bytes_of(xml));
    const std::string_view cipher = base::chars_of(encrypted);
    return {{"invoiceHash", sha256_base64(xml)},
            {"invoiceSize", xml.size()},
            {"encryptedInvoiceHash", sha256_base64(cipher)},
            {"encryptedInvoiceSize", cipher.size()},
            {"encryptedInvoiceContent", base64_encode(cipher)},
            {"offlineMode", false}};
}

std::string Client::send(const std::string& xml) {
    const Reply reply = post("/sessions/online/" + session + "/invoices", invoice_body(xml));
    return reply.status == 202 ? reply.json().at("referenceNumber").get<std::string>() : "";
}

Json Client::package_body(const std::string& archive, std::size_t count) {
    key_ = random_bytes(32);
    vector_ = random_bytes(16);
    Json body = open_body(key_);
    body["batchFile"] = {{"fileSize", archive.size()}, {"fileHash", sha256_base64(archive)}};
    const std::size_t piece = archive.size() / count + 1;
    parts.clear();
    for (std::size_t at = 0; at < archive.size(); at += piece) {
        const base::Bytes encrypted = ports::make_openssl_crypto()->aes_256_cbc_encrypt(
            bytes_of(key_), bytes_of(vector_), bytes_of(archive.substr(at, piece)));
        parts.emplace_back(base::chars_of(encrypted));
        body["batchFile"]["fileParts"].push_back({{"ordinalNumber", parts.size()},
                                                  {"fileSize", parts.back().size()},
                                                  {"fileHash", sha256_base64(parts.back())}});
    }
    return body;
}

Reply Client::open_package(const Json& body) {
    const Reply reply = post("/sessions/batch", body);
    part_urls.clear();
    if (reply.status != 201) return reply;
    const Json opened = reply.json();
    session = opened.at("referenceNumber");
    for (const Json& upload : opened.at("partUploadRequests"))
        part_urls.push_back(upload.at("url"));
    return reply;
}

Reply Client::put(const std::string& url, const std::string& content,
                  const httplib::Headers& with) {
    return reply_to(http_->Put(url.substr(url.find('/', url.find("//") + 2)), with, content,
                               "application/octet-stream"));
}

Reply Client::send_package(const Json& body) {
    open_package(body);
    for (std::size_t i = 0; i < part_urls.size(); ++i) put(part_urls[i], parts[i]);
    return post("/sessions/batch/" + session + "/close");
}

}  // namespace tavrix::sandbox::testing
