#include "ports/portable/openssl_crypto.h"

#include <openssl/bio.h>
#include <openssl/bn.h>
#include <openssl/ecdsa.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>

#include <algorithm>
#include <climits>

#include "base/error.h"
#include "ports/portable/openssl_lifetime.h"
#include "ports/portable/openssl_owners.h"

namespace tavrix::ports {
namespace {

using openssl::Bio;
using openssl::Certificate;
using openssl::Key;
using openssl::Release;
using KeyContext = std::unique_ptr<EVP_PKEY_CTX, Release<EVP_PKEY_CTX_free>>;
using CipherContext = std::unique_ptr<EVP_CIPHER_CTX, Release<EVP_CIPHER_CTX_free>>;
using DigestContext = std::unique_ptr<EVP_MD_CTX, Release<EVP_MD_CTX_free>>;
using EcdsaSignature = std::unique_ptr<ECDSA_SIG, Release<ECDSA_SIG_free>>;

using openssl::check;
using openssl::fail;

Bio reader(std::string_view pem) {
    check(pem.size() <= INT_MAX, "BIO_new_mem_buf");
    Bio bio(BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())));
    check(bio != nullptr, "BIO_new_mem_buf");
    return bio;
}

// No public key has a passphrase; without this OpenSSL would ask for one on the terminal.
int no_passphrase(char*, int, int, void*) {
    return -1;
}

class OpensslPublicKey final : public PublicKey {
  public:
    explicit OpensslPublicKey(Key key) : key_(std::move(key)) {}

    std::string pem() const override {
        const Bio bio(BIO_new(BIO_s_mem()));
        check(bio && PEM_write_bio_PUBKEY(bio.get(), key_.get()) == 1, "PEM_write_bio_PUBKEY");
        char* data = nullptr;
        const long size = BIO_get_mem_data(bio.get(), &data);
        return {data, static_cast<std::size_t>(size)};
    }

    EVP_PKEY* get() const { return key_.get(); }

  private:
    Key key_;
};

// `user` is the pass phrase, a std::string_view; an empty one opens nothing.
int give_passphrase(char* buffer, int capacity, int, void* user) {
    const auto& passphrase = *static_cast<const std::string_view*>(user);
    if (passphrase.empty() || passphrase.size() > static_cast<std::size_t>(capacity)) return -1;
    std::ranges::copy(passphrase, buffer);
    return static_cast<int>(passphrase.size());
}

class OpensslPrivateKey final : public PrivateKey {
  public:
    explicit OpensslPrivateKey(Key key) : key_(std::move(key)) {}

    std::string curve() const override {
        char name[80];
        std::size_t size = 0;
        if (EVP_PKEY_is_a(key_.get(), "EC") != 1 ||
            EVP_PKEY_get_group_name(key_.get(), name, sizeof name, &size) != 1) {
            ERR_clear_error();
            return {};
        }
        return {name, size};
    }

    // What `prepare` may set on the context belongs to the kind of key.
    template <typename Prepare>
    base::Bytes sign(base::ByteView data, Prepare prepare) const {
        const DigestContext context(EVP_MD_CTX_new());
        EVP_PKEY_CTX* parameters = nullptr;
        check(context && EVP_DigestSignInit(context.get(), &parameters, EVP_sha256(), nullptr,
                                            key_.get()) == 1,
              "EVP_DigestSignInit");
        check(prepare(parameters), "EVP_PKEY_CTX_set_rsa_padding");
        std::size_t size = 0;
        check(EVP_DigestSign(context.get(), nullptr, &size, data.data(), data.size()) == 1,
              "EVP_DigestSign");
        base::Bytes signature(size);
        check(EVP_DigestSign(context.get(), signature.data(), &size, data.data(), data.size()) == 1,
              "EVP_DigestSign");
        signature.resize(size);
        return signature;
    }

    int bits() const { return EVP_PKEY_get_bits(key_.get()); }

  private:
    Key key_;
};

class OpensslSha256 final : public Sha256 {
  public:
    OpensslSha256() {
        check(context_ && EVP_DigestInit_ex(context_.get(), EVP_sha256(), nullptr) == 1,
              "EVP_DigestInit_ex");
    }
    void add(base::ByteView data) override {
        check(EVP_DigestUpdate(context_.get(), data.data(), data.size()) == 1, "EVP_DigestUpdate");
    }
    base::Bytes finish() override {
        base::Bytes digest(32);
        check(EVP_DigestFinal_ex(context_.get(), digest.data(), nullptr) == 1,
              "EVP_DigestFinal_ex");
        return digest;
    }

  private:
    DigestContext context_{EVP_MD_CTX_new()};
};

class OpensslAesEncryption final : public AesEncryption {
  public:
    OpensslAesEncryption(base::ByteView key, base::ByteView iv) {
        check(key.size() == 32 && iv.size() == block_bytes,
              "AES-256-CBC: key or IV of the wrong length");
        check(context_ && EVP_EncryptInit_ex(context_.get(), EVP_aes_256_cbc(), nullptr, key.data(),
                                             iv.data()) == 1,
              "EVP_EncryptInit_ex");
    }
    std::size_t add(base::ByteView plain, std::span<std::uint8_t> cipher) override {
        check(plain.size() <= INT_MAX - block_bytes && plain.size() + block_bytes <= cipher.size(),
              "AES-256-CBC: too much data");
        int size = 0;
        check(EVP_EncryptUpdate(context_.get(), cipher.data(), &size, plain.data(),
                                static_cast<int>(plain.size())) == 1,
              "EVP_EncryptUpdate");
        return static_cast<std::size_t>(size);
    }
    std::size_t finish(std::span<std::uint8_t> cipher) override {
        check(cipher.size() >= block_bytes, "AES-256-CBC: no room");
        int size = 0;
        check(EVP_EncryptFinal_ex(context_.get(), cipher.data(), &size) == 1,
              "EVP_EncryptFinal_ex");
        return static_cast<std::size_t>(size);
    }

  private:
    CipherContext context_{EVP_CIPHER_CTX_new()};
};

class OpensslCrypto final : public Crypto {
  public:
    void fill_random(std::span<std::uint8_t> bytes) override {
        check(bytes.size() <= INT_MAX &&
                  RAND_bytes(bytes.data(), static_cast<int>(bytes.size())) == 1,
              "RAND_bytes");
    }

    base::Bytes sha256(base::ByteView data) override {
        base::Bytes digest(32);
        unsigned int size = 0;
        check(EVP_Digest(data.data(), data.size(), digest.data(), &size, EVP_sha256(), nullptr) ==
                      1 &&
                  size == digest.size(),
              "EVP_Digest");
        return digest;
    }

    base::Bytes aes_256_cbc_encrypt(base::ByteView key, base::ByteView iv,
                                    base::ByteView plain) override {
        OpensslAesEncryption encryption(key, iv);
        base::Bytes cipher(plain.size() + AesEncryption::block_bytes);
        const std::size_t body = encryption.add(plain, cipher);
        cipher.resize(body + encryption.finish(std::span(cipher).subspan(body)));
        return cipher;
    }

    std::unique_ptr<Sha256> begin_sha256() override { return std::make_unique<OpensslSha256>(); }
    std::unique_ptr<AesEncryption> begin_aes_256_cbc(base::ByteView key,
                                                     base::ByteView iv) override {
        return std::make_unique<OpensslAesEncryption>(key, iv);
    }

    std::unique_ptr<PublicKey> key_of_certificate(std::string_view pem) override {
        const Certificate certificate(
            PEM_read_bio_X509(reader(pem).get(), nullptr, no_passphrase, nullptr));
        check(certificate != nullptr, "PEM_read_bio_X509");
        Key key(X509_get_pubkey(certificate.get()));
        check(key != nullptr, "X509_get_pubkey");
        return std::make_unique<OpensslPublicKey>(std::move(key));
    }

    std::unique_ptr<PublicKey> load_public_key(std::string_view pem) override {
        Key key(PEM_read_bio_PUBKEY(reader(pem).get(), nullptr, no_passphrase, nullptr));
        check(key != nullptr, "PEM_read_bio_PUBKEY");
        return std::make_unique<OpensslPublicKey>(std::move(key));
    }

    base::Bytes rsa_oaep_sha256_encrypt(const PublicKey& key, base::ByteView plain) override {
        const auto& rsa = dynamic_cast<const OpensslPublicKey&>(key);
        const KeyContext context(EVP_PKEY_CTX_new(rsa.get(), nullptr));
        check(context && EVP_PKEY_encrypt_init(context.get()) == 1, "EVP_PKEY_encrypt_init");
        check(EVP_PKEY_CTX_set_rsa_padding(context.get(), RSA_PKCS1_OAEP_PADDING) == 1 &&
                  EVP_PKEY_CTX_set_rsa_oaep_md(context.get(), EVP_sha256()) == 1 &&
                  EVP_PKEY_CTX_set_rsa_mgf1_md(context.get(), EVP_sha256()) == 1,
              "RSA-OAEP parameters");
        std::size_t size = 0;
        check(EVP_PKEY_encrypt(context.get(), nullptr, &size, plain.data(), plain.size()) == 1,
              "EVP_PKEY_encrypt");
        base::Bytes cipher(size);
        check(
            EVP_PKEY_encrypt(context.get(), cipher.data(), &size, plain.data(), plain.size()) == 1,
            "EVP_PKEY_encrypt");
        cipher.resize(size);
        return cipher;
    }

    std::unique_ptr<PrivateKey> load_private_key(std::string_view pem,
                                                 std::string_view pass_phrase) override {
        if (pem.find("-----BEGIN ") != std::string_view::npos &&
            pem.find("PRIVATE KEY-----") == std::string_view::npos) {
            return nullptr;
        }
        Key key(PEM_read_bio_PrivateKey(reader(pem).get(), nullptr, give_passphrase, &pass_phrase));
        check(key != nullptr, "PEM_read_bio_PrivateKey");
        ERR_clear_error();
        return std::make_unique<OpensslPrivateKey>(std::move(key));
    }

    base::Bytes ecdsa_sha256_sign(const PrivateKey& key, base::ByteView data) override {
        const auto& ec = dynamic_cast<const OpensslPrivateKey&>(key);
        check(!ec.curve().empty(), "ECDSA: no EC key");
        const base::Bytes der = ec.sign(data, [](EVP_PKEY_CTX*) { return true; });
        const unsigned char* at = der.data();
        const EcdsaSignature parts(d2i_ECDSA_SIG(nullptr, &at, static_cast<long>(der.size())));
        check(parts != nullptr, "d2i_ECDSA_SIG");
        const int width = (ec.bits() + 7) / 8;
        base::Bytes signature(static_cast<std::size_t>(2 * width));
        check(BN_bn2binpad(ECDSA_SIG_get0_r(parts.get()), signature.data(), width) == width &&
                  BN_bn2binpad(ECDSA_SIG_get0_s(parts.get()), signature.data() + width, width) ==
                      width,
              "BN_bn2binpad");
        return signature;
    }

    base::Bytes rsa_pss_sha256_sign(const PrivateKey& key, base::ByteView data) override {
        return dynamic_cast<const OpensslPrivateKey&>(key).sign(data, [](EVP_PKEY_CTX* parameters) {
            return EVP_PKEY_CTX_set_rsa_padding(parameters, RSA_PKCS1_PSS_PADDING) == 1 &&
                   EVP_PKEY_CTX_set_rsa_pss_saltlen(parameters, 32) == 1 &&
                   EVP_PKEY_CTX_set_rsa_mgf1_md(parameters, EVP_sha256()) == 1;
        });
    }
};

}  // namespace

std::unique_ptr<Crypto> make_openssl_crypto() {
    start_openssl();
    return std::make_unique<OpensslCrypto>();
}

}  // namespace tavrix::ports
