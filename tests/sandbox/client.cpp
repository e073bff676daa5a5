#include "tests/sandbox/client.h"

#include <openssl/rsa.h>

#include "sandbox/basics/certificates.h"
#include "sandbox/basics/crypto.h"

namespace tavrix::sandbox::testing {
namespace {

unsigned char* bytes(std::string& text) {
    return reinterpret_cast<unsigned char*>(text.data());
}
const unsigned char* bytes(const std::string& text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

}  // namespace

Json Reply::json() const {
    Json value = Json::parse(body, nullptr, false);
    return value.is_discarded() ? Json() : value;
}

int Reply::exception_code() const {
    const Json value = json();
    const Json::json_pointer code("/exception/exceptionDetailList/0/exceptionCode");
    return value.is_object() && value.contains(code) ? value.at(code).get<int>() : 0;
}

std::string Reply::header(const std::string& name) const {
    const auto found = headers.find(name);
    return found == headers.end() ? "" : found->second;
}

std::string encrypt_for_certificate(const std::string& certificate_base64,
                                    const std::string& plain) {
    const CertificateHandle certificate = read_certificate(
        "-----BEGIN CERTIFICATE-----\n" + certificate_base64 + "\n-----END CERTIFICATE-----");
    EVP_PKEY* key = X509_get0_pubkey(certificate.get());
    const KeyContextHandle context(EVP_PKEY_CTX_new(key, nullptr));
    EVP_PKEY_encrypt_init(context.get());
    EVP_PKEY_CTX_set_rsa_padding(context.get(), RSA_PKCS1_OAEP_PADDING);
    EVP_PKEY_CTX_set_rsa_oaep_md(context.get(), EVP_sha256());
    EVP_PKEY_CTX_set_rsa_mgf1_md(context.get(), EVP_sha256());
    std::size_t size = std::size_t(EVP_PKEY_get_size(key));
    std::string cipher(size, '\0');
    EVP_PKEY_encrypt(context.get(), bytes(cipher), &size, bytes(plain), plain.size());
    return base64_encode(cipher);
}

std::string aes_256_cbc_encrypt(const std::string& key, const std::string& vector,
                                const std::string& plain) {
    const CipherContextHandle context(EVP_CIPHER_CTX_new());
    EVP_EncryptInit_ex(context.get(), EVP_aes_256_cbc(), nullptr, bytes(key), bytes(vector));
    std::string cipher(plain.size() + 16, '\0');
    int written = 0, last = 0;
    EVP_EncryptUpdate(context.get(), bytes(cipher), &written, bytes(plain), int(plain.size()));
    EVP_EncryptFinal_ex(context.get(), bytes(cipher) + written, &last);
    cipher.resize(std::size_t(written + last));
    return cipher;
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

httplib::Headers Client::request_headers() const {
    httplib::Headers result(headers.begin(), headers.end());
    if (!bearer.empty()) result.emplace("Authorization", "Bearer " + bearer);
    return result;
}

Reply Client::to_reply(const httplib::Result& result) {
    return result ? Reply{result->status, result->body, result->headers} : Reply{};
}

Reply Client::get(const std::string& path) {
    return to_reply(http_->Get(root_ + path, request_headers()));
}

Reply Client::post(const std::string& path, const Json& body) {
    return post_text(path, dump(body));
}

Reply Client::post_text(const std::string& path, const std::string& body) {
    return to_reply(http_->Post(root_ + path, request_headers(), body, "application/json"));
}

Reply Client::remove(const std::string& path) {
    return to_reply(http_->Delete(root_ + path, request_headers()));
}

Reply Client::download(const std::string& url) {
    return to_reply(http_->Get(url.substr(url.find('/', url.find("//") + 2))));
}

Json Client::challenge() {
    return post("/auth/challenge").json();
}

std::string Client::certificate(const std::string& usage) {
    std::string last;
    for (const Json& entry : get("/security/public-key-certificates").json())
        if (entry.at("usage") == Json::array({usage})) last = entry.at("certificate");
    return last;
}

Reply Client::send_token(const std::string& token, const std::string& nip, const Json& challenge) {
    const std::string plain =
        token + "|" + std::to_string(challenge.at("timestampMs").get<std::int64_t>());
    const Reply reply = post(
        "/auth/ksef-token",
        {{"challenge", challenge.at("challenge")},
         {"contextIdentifier", {{"type", "Nip"}, {"value", nip}}},
         {"encryptedToken", encrypt_for_certificate(certificate("KsefTokenEncryption"), plain)}});
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

Json Client::invoice_body(const std::string& xml, bool as_text) {
    const std::string cipher = aes_256_cbc_encrypt(key_, vector_, xml);
    const auto size = [as_text](std::size_t value) {
        return as_text ? Json(std::to_string(value)) : Json(value);
    };
    return {{"invoiceHash", sha256_base64(xml)},
            {"invoiceSize", size(xml.size())},
            {"encryptedInvoiceHash", sha256_base64(cipher)},
            {"encryptedInvoiceSize", size(cipher.size())},
            {"encryptedInvoiceContent", base64_encode(cipher)},
            {"offlineMode", false}};
}

std::string Client::send(const std::string& xml) {
    const Reply reply = post("/sessions/online/" + session + "/invoices", invoice_body(xml));
    return reply.status == 202 ? reply.json().at("referenceNumber").get<std::string>() : "";
}

Json Client::invoice_status(const std::string& reference) {
    return get("/sessions/" + session + "/invoices/" + reference).json().at("status");
}

}  // namespace tavrix::sandbox::testing
