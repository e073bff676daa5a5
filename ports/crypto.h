#pragma once

#include <memory>

#include "base/text.h"

namespace tavrix::ports {

/// A public key that was read; what it is made of is the adapter's affair.
class PublicKey {
  public:
    virtual ~PublicKey() = default;
    /// The key as PEM text (SubjectPublicKeyInfo, RFC 7468).
    virtual std::string pem() const = 0;
};

/// A private key that was read; wiped with the object.
class PrivateKey {
  public:
    virtual ~PrivateKey() = default;
    /// The name of an EC key's curve, "prime256v1" for P-256; "" for a key of any other kind.
    virtual std::string curve() const = 0;
};

/// A SHA-256 digest (FIPS 180-4) of bytes that come in pieces.
class Sha256 {
  public:
    virtual ~Sha256() = default;
    virtual void add(base::ByteView data) = 0;
    /// The digest of everything; nothing may be added any more.
    virtual base::Bytes finish() = 0;
};

/// AES-256-CBC with PKCS#7 padding of bytes that come in pieces.
class AesEncryption {
  public:
    static constexpr std::size_t block_bytes = 16;
    virtual ~AesEncryption() = default;
    /// Writes what can be encrypted by now to the beginning of `cipher`, which has room for
    /// `plain` and one block, and gives its size.
    virtual std::size_t add(base::ByteView plain, std::span<std::uint8_t> cipher) = 0;
    /// The same for the last block, with the padding: 16 bytes.
    virtual std::size_t finish(std::span<std::uint8_t> cipher) = 0;
};

/// Cryptography and randomness. Every function throws base::AutomationError when the operation
/// fails; its description is the component's last error text.
class Crypto {
  public:
    virtual ~Crypto() = default;

    /// Fills `bytes` from the system's generator.
    virtual void fill_random(std::span<std::uint8_t> bytes) = 0;
    /// 32 bytes, FIPS 180-4.
    virtual base::Bytes sha256(base::ByteView data) = 0;
    /// AES-256 in CBC mode with PKCS#7 padding (FIPS 197, SP 800-38A, RFC 5652 6.3). `key` 32
    /// bytes, `iv` 16 bytes; the result is `plain` rounded up to the next multiple of 16, without
    /// the IV.
    virtual base::Bytes aes_256_cbc_encrypt(base::ByteView key, base::ByteView iv,
                                            base::ByteView plain) = 0;
    /// The same two for what does not fit into memory.
    virtual std::unique_ptr<Sha256> begin_sha256() = 0;
    virtual std::unique_ptr<AesEncryption> begin_aes_256_cbc(base::ByteView key,
                                                             base::ByteView iv) = 0;
    /// The key of an X.509 certificate in PEM.
    virtual std::unique_ptr<PublicKey> key_of_certificate(std::string_view pem) = 0;
    /// A key from what PublicKey::pem gave.
    virtual std::unique_ptr<PublicKey> load_public_key(std::string_view pem) = 0;
    /// RSAES-OAEP (RFC 8017, 7.1), SHA-256 for both the label and MGF1.
    virtual base::Bytes rsa_oaep_sha256_encrypt(const PublicKey& key, base::ByteView plain) = 0;
    /// The first private key in `pem`: PKCS#8 (RFC 5958), SEC 1 (RFC 5915) or PKCS#1, also
    /// encrypted with `pass_phrase`. Null for PEM that holds none; throws for what is no PEM or
    /// cannot be decrypted.
    virtual std::unique_ptr<PrivateKey> load_private_key(std::string_view pem,
                                                         std::string_view pass_phrase) = 0;
    /// ECDSA over the SHA-256 of `data` (FIPS 186-5, 6): r and s, each as long as the curve's
    /// order, as IEEE P1363 puts them side by side.
    virtual base::Bytes ecdsa_sha256_sign(const PrivateKey& key, base::ByteView data) = 0;
    /// RSASSA-PSS over the SHA-256 of `data` (RFC 8017, 8.1), MGF1 with SHA-256, 32 bytes of salt.
    virtual base::Bytes rsa_pss_sha256_sign(const PrivateKey& key, base::ByteView data) = 0;
};

}  // namespace tavrix::ports
