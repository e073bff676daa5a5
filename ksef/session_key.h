#pragma once

#include "ksef/client.h"

namespace tavrix::ksef {

/// A session's fresh AES key and IV, and the key encrypted for the service.
struct SessionKey {
    base::SecretBytes key;      ///< 32 bytes
    base::Bytes iv;             ///< 16 bytes
    std::string encrypted_key;  ///< Base64 of the RSA-OAEP ciphertext
};

/// Makes both and encrypts the key under the public key that authentication stored. Returns the
/// failure's text, "Load RSA Public Key failed: " or "RSA Encrypt AES Key failed: " with the
/// component's last error text, or "".
base::Text make_session_key(ports::Crypto& crypto, const Client& client, SessionKey& session_key);

/// The object "encryption" of a request that opens a session.
Body encryption_of(const SessionKey& session_key);

}  // namespace tavrix::ksef
