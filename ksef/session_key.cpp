#include "ksef/session_key.h"

#include "base/base64.h"
#include "base/error.h"

namespace tavrix::ksef {

base::Text make_session_key(ports::Crypto& crypto, const Client& client, SessionKey& session_key) {
    session_key.key = base::SecretBytes(32);
    crypto.fill_random(session_key.key.units());
    session_key.iv.resize(16);
    crypto.fill_random(session_key.iv);
    std::unique_ptr<ports::PublicKey> public_key;
    try {
        public_key = crypto.load_public_key(client.symmetric_key_pem);
    } catch (const base::AutomationError& error) {
        return u"Load RSA Public Key failed: " + error.description();
    }
    try {
        // The bytes themselves: a way through text would lose some where the system's code page is
        // not one of single bytes.
        session_key.encrypted_key = base::base64_encode(
            crypto.rsa_oaep_sha256_encrypt(*public_key, session_key.key.view()));
    } catch (const base::AutomationError& error) {
        return u"RSA Encrypt AES Key failed: " + error.description();
    }
    return {};
}

Body encryption_of(const SessionKey& session_key) {
    Body encryption;
    encryption["encryptedSymmetricKey"] = session_key.encrypted_key;
    encryption["initializationVector"] = base::base64_encode(session_key.iv);
    return encryption;
}

}  // namespace tavrix::ksef
