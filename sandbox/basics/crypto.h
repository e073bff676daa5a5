// The cryptography of the exchange. Bytes travel in std::string; nothing here is kept after a call.
#pragma once

#include <openssl/evp.h>

#include <optional>
#include <string>
#include <string_view>

#include "sandbox/basics/openssl_handles.h"

namespace tavrix::sandbox {

std::string sha256(std::string_view data);
std::string sha256_base64(std::string_view data);
std::string hmac_sha256(std::string_view key, std::string_view data);

std::string base64_encode(std::string_view data);
/// Strict RFC 4648: padded, no line breaks; nullopt for anything else.
std::optional<std::string> base64_decode(std::string_view text);
std::string base64_url_encode(std::string_view data);
std::optional<std::string> base64_url_decode(std::string_view text);

/// RSAES-OAEP with SHA-256 for the label hash and for MGF1; nullopt when the padding does not fit
/// the key.
std::optional<std::string> rsa_oaep_decrypt(EVP_PKEY* key, std::string_view ciphertext);

/// AES-256-CBC with PKCS#7 padding; nullopt for a wrong key, vector, length or padding.
std::optional<std::string> aes_256_cbc_decrypt(std::string_view key, std::string_view vector,
                                               std::string_view ciphertext);

/// SHA-256 of what comes in pieces.
class Sha256Stream {
  public:
    Sha256Stream();
    void add(std::string_view piece);
    /// Of everything added; the stream is of no more use.
    std::string base64();

  private:
    DigestContextHandle context_;
};

/// aes_256_cbc_decrypt of what comes in pieces.
class AesCbcDecryption {
  public:
    /// Throws std::runtime_error when key and vector are not of 32 and 16 bytes.
    AesCbcDecryption(std::string_view key, std::string_view vector);
    std::string add(std::string_view piece);
    /// The last bytes; nullopt for a wrong length or padding.
    std::optional<std::string> finish();

  private:
    CipherContextHandle context_;
};

std::string random_bytes(std::size_t count);
/// `count` upper-case hexadecimal digits.
std::string random_hex(std::size_t count);
std::string lower_hex(std::string_view data);

}  // namespace tavrix::sandbox
