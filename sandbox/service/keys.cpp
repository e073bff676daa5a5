#include "sandbox/service/keys.h"

#include <future>

#include "sandbox/basics/crypto.h"

namespace tavrix::sandbox {
namespace {

using std::chrono::days;
constexpr days lifetime{730};

std::string common_name(std::string_view usage) {
    return "Tavrix sandbox " + std::string(usage);
}

}  // namespace

KeyRing::Key KeyRing::make_key(std::string usage, KeyPair pem) {
    Key key;
    key.usage = std::move(usage);
    key.key = read_private_key(pem.private_key_pem);
    const CertificateHandle certificate = read_certificate(pem.certificate_pem);
    const std::string der = certificate_der(certificate.get());
    key.certificate_base64 = base64_encode(der);
    key.certificate_id = sha256_base64(der);
    key.public_key_id = sha256_base64(public_key_der(certificate.get()));
    key.validity = certificate_validity(certificate.get());
    key.pem = std::move(pem);
    return key;
}

KeyRing KeyRing::generate(Instant now) {
    const Validity validity{now - days(1), now + lifetime};
    // Making RSA keys is what starting the sandbox costs; two at a time.
    auto token_key = std::async(std::launch::async, [&] {
        return make_encryption_certificate(common_name(token_usage), validity);
    });
    KeyPair symmetric = make_encryption_certificate(common_name(symmetric_key_usage), validity);
    KeyRing ring;
    ring.keys_.push_back(make_key(std::string(token_usage), token_key.get()));
    ring.keys_.push_back(make_key(std::string(symmetric_key_usage), std::move(symmetric)));
    return ring;
}

KeyRing KeyRing::load(std::string_view saved) {
    KeyRing ring;
    for (const Json& key : parse_json(saved))
        ring.keys_.push_back(
            make_key(key.at("usage"), {key.at("privateKey"), key.at("certificate")}));
    return ring;
}

std::string KeyRing::save() const {
    Json saved = Json::array();
    for (const Key& key : keys_)
        saved.push_back({{"usage", key.usage},
                         {"privateKey", key.pem.private_key_pem},
                         {"certificate", key.pem.certificate_pem}});
    return dump(saved);
}

void KeyRing::rotate(std::string_view usage, Instant now) {
    keys_.push_back(make_key(std::string(usage), make_encryption_certificate(
                                                     common_name(usage), {now, now + lifetime})));
}

Json KeyRing::published(Instant now, const TimeFormat& time) const {
    Json list = Json::array();
    for (const Key& key : keys_) {
        if (!key.valid_at(now)) continue;
        list.push_back({{"certificate", key.certificate_base64},
                        {"certificateId", key.certificate_id},
                        {"publicKeyId", key.public_key_id},
                        {"validFrom", time.text(key.validity.from)},
                        {"validTo", time.text(key.validity.to)},
                        {"usage", Json::array({key.usage})}});
    }
    return list;
}

bool KeyRing::knows(std::string_view usage, std::string_view public_key_id, Instant now) const {
    for (const Key& key : keys_)
        if (key.usage == usage && key.public_key_id == public_key_id && key.valid_at(now))
            return true;
    return false;
}

std::optional<std::string> KeyRing::decrypt(std::string_view usage, std::string_view ciphertext,
                                            Instant now, std::string_view public_key_id) const {
    for (const Key& key : keys_) {
        if (key.usage != usage || !key.valid_at(now)) continue;
        if (!public_key_id.empty() && key.public_key_id != public_key_id) continue;
        if (auto plain = rsa_oaep_decrypt(key.key.get(), ciphertext)) return plain;
    }
    return std::nullopt;
}

}  // namespace tavrix::sandbox
