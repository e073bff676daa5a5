#include "ports/portable/pfx.h"

#include <openssl/bio.h>
#include <openssl/err.h>

#include <climits>
#include <optional>

namespace tavrix::ports::openssl {
namespace {

inline void free_infos(STACK_OF(PKCS7) * infos) {
    sk_PKCS7_pop_free(infos, PKCS7_free);
}
inline void free_bags(STACK_OF(PKCS12_SAFEBAG) * bags) {
    sk_PKCS12_SAFEBAG_pop_free(bags, PKCS12_SAFEBAG_free);
}
using File = std::unique_ptr<PKCS12, Release<PKCS12_free>>;
using Infos = std::unique_ptr<STACK_OF(PKCS7), Release<free_infos>>;
using Bags = std::unique_ptr<STACK_OF(PKCS12_SAFEBAG), Release<free_bags>>;
using PlainKey = std::unique_ptr<PKCS8_PRIV_KEY_INFO, Release<PKCS8_PRIV_KEY_INFO_free>>;

// Nested safes deeper than this are nobody's certificate.
constexpr int deepest_safe = 8;

struct Contents {
    std::vector<Key> keys;
    std::vector<Certificate> certificates;
};

// RFC 7292 4.2: what a file holds, opened with one password. A null password and an empty one
// differ: some programs write two zero bytes for "none", others nothing.
class Reader {
  public:
    Reader(OSSL_LIB_CTX* library, const char* password, int size)
        : library_(library), password_(password), size_(size) {}

    bool read(const PKCS12& file) {
        if (PKCS12_mac_present(&file) == 1 &&
            PKCS12_verify_mac(const_cast<PKCS12*>(&file), password_, size_) != 1) {
            return false;
        }
        const Infos infos(PKCS12_unpack_authsafes(&file));
        if (!infos) return false;
        for (int i = 0; i < sk_PKCS7_num(infos.get()); ++i) {
            if (!read(sk_PKCS7_value(infos.get(), i))) return false;
        }
        return true;
    }

    Contents contents;

  private:
    bool read(PKCS7* info) {
        const int kind = OBJ_obj2nid(info->type);
        if (kind == NID_pkcs7_data) {
            const Bags bags(PKCS12_unpack_p7data(info));
            return bags && read(bags.get(), 0);
        }
        if (kind == NID_pkcs7_encrypted) {
            const Bags bags(PKCS12_unpack_p7encdata(info, password_, size_));
            return bags && read(bags.get(), 0);
        }
        return true;
    }

    bool read(const STACK_OF(PKCS12_SAFEBAG) * bags, int depth) {
        if (depth > deepest_safe) return false;
        for (int i = 0; i < sk_PKCS12_SAFEBAG_num(bags); ++i) {
            const PKCS12_SAFEBAG* bag = sk_PKCS12_SAFEBAG_value(bags, i);
            switch (PKCS12_SAFEBAG_get_nid(bag)) {
                case NID_keyBag:
                    if (!take(PKCS12_SAFEBAG_get0_p8inf(bag))) return false;
                    break;
                case NID_pkcs8ShroudedKeyBag: {
                    const PlainKey key(
                        PKCS12_decrypt_skey_ex(bag, password_, size_, library_, nullptr));
                    if (!key || !take(key.get())) return false;
                    break;
                }
                case NID_certBag:
                    if (PKCS12_SAFEBAG_get_bag_nid(bag) == NID_x509Certificate) {
                        Certificate certificate(PKCS12_SAFEBAG_get1_cert(bag));
                        if (!certificate) return false;
                        contents.certificates.push_back(std::move(certificate));
                    }
                    break;
                case NID_safeContentsBag:
                    if (!read(PKCS12_SAFEBAG_get0_safes(bag), depth + 1)) return false;
                    break;
                default:
                    break;
            }
        }
        return true;
    }

    bool take(const PKCS8_PRIV_KEY_INFO* info) {
        Key key(EVP_PKCS82PKEY_ex(info, library_, nullptr));
        if (!key) return false;
        contents.keys.push_back(std::move(key));
        return true;
    }

    OSSL_LIB_CTX* library_;
    const char* password_;
    int size_;
};

std::optional<Contents> open(OSSL_LIB_CTX* library, const PKCS12& file,
                             const base::SecretBytes& password) {
    // The functions want a zero behind the password.
    base::SecretUtf8 bytes;
    bytes.reserve(password.size() + 1);
    bytes += base::chars_of(password.view());
    bytes += '\0';
    const int size = static_cast<int>(password.size());
    if (size == 0) {
        Reader none(library, nullptr, 0);
        if (none.read(file)) return std::move(none.contents);
    }
    Reader reader(library, bytes.view().data(), size);
    if (reader.read(file)) return std::move(reader.contents);
    return std::nullopt;
}

bool is_self_signed(X509* certificate) {
    return X509_self_signed(certificate, 0) == 1;
}

Pfx choose(Contents contents) {
    Pfx chosen;
    std::size_t own = 0;
    for (Key& key : contents.keys) {
        for (std::size_t i = 0; i < contents.certificates.size() && !chosen.key; ++i) {
            if (X509_check_private_key(contents.certificates[i].get(), key.get()) != 1) continue;
            own = i;
            chosen.key = std::move(key);
        }
        if (chosen.key) break;
    }
    check(chosen.key != nullptr, "PKCS#12: no key with a certificate");
    chosen.certificate = std::move(contents.certificates[own]);
    chosen.chain.reset(sk_X509_new_null());
    check(chosen.chain != nullptr, "sk_X509_new_null");
    for (Certificate& other : contents.certificates) {
        if (!other || is_self_signed(other.get())) continue;
        check(sk_X509_push(chosen.chain.get(), other.get()) > 0, "sk_X509_push");
        // It belongs to the stack now.
        static_cast<void>(other.release());
    }
    return chosen;
}

}  // namespace

LegacyLibrary::LegacyLibrary() : library_(OSSL_LIB_CTX_new()) {
    check(library_ != nullptr, "OSSL_LIB_CTX_new");
    usual_.reset(OSSL_PROVIDER_load(library_.get(), "default"));
    check(usual_ != nullptr, "OSSL_PROVIDER_load");
    // Where it is missing, newer files can still be read.
    legacy_.reset(OSSL_PROVIDER_load(library_.get(), "legacy"));
    ERR_clear_error();
}

Pfx read_pfx(const LegacyLibrary& library, base::ByteView file,
             std::span<const base::SecretBytes> passwords) {
    check(file.size() <= INT_MAX, "PKCS#12: too large");
    const Bio bio(BIO_new_mem_buf(file.data(), static_cast<int>(file.size())));
    PKCS12* empty = PKCS12_init_ex(NID_pkcs7_data, library.get(), nullptr);
    check(bio && empty, "PKCS12_init_ex");
    // When it fails, it frees what it was given.
    const File parsed(d2i_PKCS12_bio(bio.get(), &empty));
    check(parsed != nullptr, "d2i_PKCS12");
    for (const base::SecretBytes& password : passwords) {
        if (auto contents = open(library.get(), *parsed, password)) {
            ERR_clear_error();
            return choose(std::move(*contents));
        }
    }
    check(false, "PKCS#12: password");
    return {};
}

}  // namespace tavrix::ports::openssl
