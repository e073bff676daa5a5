#include "ports/portable/openssl_signing.h"

#include <openssl/bio.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rand.h>

#include <algorithm>
#include <chrono>
#include <climits>
#include <cstdio>

#include "base/error.h"
#include "ports/portable/certificate_name.h"
#include "ports/portable/openssl_lifetime.h"
#include "ports/portable/pfx.h"

namespace tavrix::ports {
namespace {

inline void pop_certificates_only(STACK_OF(X509) * certificates) {
    sk_X509_free(certificates);
}
inline void free_bytes(unsigned char* bytes) {
    OPENSSL_free(bytes);
}
using BorrowedCertificates =
    std::unique_ptr<STACK_OF(X509), openssl::Release<pop_certificates_only>>;
using Time = std::unique_ptr<ASN1_TIME, openssl::Release<ASN1_TIME_free>>;
using Attribute = std::unique_ptr<X509_ATTRIBUTE, openssl::Release<X509_ATTRIBUTE_free>>;
using Digest = std::unique_ptr<EVP_MD_CTX, openssl::Release<EVP_MD_CTX_free>>;
using Cipher = std::unique_ptr<EVP_CIPHER_CTX, openssl::Release<EVP_CIPHER_CTX_free>>;
using Store = std::unique_ptr<X509_STORE, openssl::Release<X509_STORE_free>>;
using StoreContext = std::unique_ptr<X509_STORE_CTX, openssl::Release<X509_STORE_CTX_free>>;
using BioKind = std::unique_ptr<BIO_METHOD, openssl::Release<BIO_meth_free>>;
using OwnedBytes = std::unique_ptr<unsigned char, openssl::Release<free_bytes>>;

// UTCTime or GeneralizedTime, as RFC 5652 11.3 divides the years between them.
Time asn1_time(const base::DateTime& moment) {
    char digits[32];
    std::snprintf(digits, sizeof digits, "%04d%02d%02d%02d%02d%02dZ", moment.year, moment.month,
                  moment.day, moment.hour, moment.minute, moment.second);
    Time time(ASN1_TIME_new());
    openssl::check(time && ASN1_TIME_set_string_X509(time.get(), digits) == 1,
                   "ASN1_TIME_set_string_X509");
    return time;
}

std::string encoded(const X509_ATTRIBUTE* attribute) {
    unsigned char* der = nullptr;
    const int size = i2d_X509_ATTRIBUTE(const_cast<X509_ATTRIBUTE*>(attribute), &der);
    openssl::check(size > 0, "i2d_X509_ATTRIBUTE");
    const OwnedBytes owned(der);
    return {reinterpret_cast<const char*>(der), static_cast<std::size_t>(size)};
}

// DER of a SET OF (X.690 10.3, 11.6): the elements sorted by their encoding.
base::Bytes encoded_set(std::vector<std::string> elements) {
    std::ranges::sort(elements);
    std::string content;
    for (const std::string& element : elements) content += element;
    base::Bytes set(static_cast<std::size_t>(
        ASN1_object_size(1, static_cast<int>(content.size()), V_ASN1_SET)));
    unsigned char* at = set.data();
    ASN1_put_object(&at, 1, static_cast<int>(content.size()), V_ASN1_SET, V_ASN1_UNIVERSAL);
    std::ranges::copy(content, at);
    return set;
}

class OpensslSignature final : public DetachedSignature {
  public:
    OpensslSignature(OSSL_LIB_CTX* library, const openssl::Pfx& pfx, const base::DateTime& moment,
                     SigningTime time)
        : library_(library), key_(pfx.key.get()), time_(time) {
        constexpr unsigned int form = CMS_DETACHED | CMS_BINARY | CMS_PARTIAL;
        cms_.reset(CMS_sign_ex(nullptr, nullptr, pfx.chain.get(), nullptr, form | CMS_STREAM,
                               library, nullptr));
        openssl::check(cms_ != nullptr, "CMS_sign");
        signer_ = CMS_add1_signer(cms_.get(), pfx.certificate.get(), key_, EVP_sha256(),
                                  form | CMS_CADES | CMS_NOSMIMECAP);
        openssl::check(signer_ != nullptr, "CMS_add1_signer");
        const Time asn1 = asn1_time(moment);
        openssl::check(CMS_signed_add1_attr_by_NID(signer_, NID_pkcs9_signingTime, asn1->type,
                                                   asn1.get(), -1) == 1,
                       "CMS_signed_add1_attr");
        content_.reset(CMS_dataInit(cms_.get(), nullptr));
        openssl::check(content_ != nullptr, "CMS_dataInit");
    }

    void add(base::ByteView data) override {
        while (!data.empty()) {
            const auto piece = static_cast<int>(std::min<std::size_t>(data.size(), 1 << 20));
            openssl::check(BIO_write(content_.get(), data.data(), piece) == piece, "BIO_write");
            data = data.subspan(static_cast<std::size_t>(piece));
        }
    }

    base::Bytes finish() override {
        openssl::check(CMS_dataFinal(cms_.get(), content_.get()) == 1, "CMS_dataFinal");
        if (time_ == SigningTime::nowhere) sign_without_time();
        unsigned char* der = nullptr;
        const int size = i2d_CMS_ContentInfo(cms_.get(), &der);
        openssl::check(size > 0, "i2d_CMS_ContentInfo");
        const OwnedBytes owned(der);
        return {der, der + size};
    }

  private:
    // OpenSSL 3.0 signs no attributes without the time, so it is taken out and the rest signed
    // anew.
    void sign_without_time() {
        const Attribute time(CMS_signed_delete_attr(
            signer_, CMS_signed_get_attr_by_NID(signer_, NID_pkcs9_signingTime, -1)));
        openssl::check(time != nullptr, "CMS_signed_delete_attr");
        std::vector<std::string> left;
        for (int i = 0; i < CMS_signed_get_attr_count(signer_); ++i) {
            left.push_back(encoded(CMS_signed_get_attr(signer_, i)));
        }
        const base::Bytes set = encoded_set(std::move(left));
        const Digest context(EVP_MD_CTX_new());
        std::size_t size = 0;
        openssl::check(
            context &&
                EVP_DigestSignInit_ex(context.get(), nullptr, "SHA256", library_, nullptr, key_,
                                      nullptr) == 1 &&
                EVP_DigestSign(context.get(), nullptr, &size, set.data(), set.size()) == 1,
            "EVP_DigestSign");
        base::Bytes signature(size);
        openssl::check(
            EVP_DigestSign(context.get(), signature.data(), &size, set.data(), set.size()) == 1,
            "EVP_DigestSign");
        openssl::check(ASN1_OCTET_STRING_set(CMS_SignerInfo_get0_signature(signer_),
                                             signature.data(), static_cast<int>(size)) == 1,
                       "ASN1_OCTET_STRING_set");
    }

    OSSL_LIB_CTX* library_;
    EVP_PKEY* key_;
    SigningTime time_;
    openssl::Cms cms_;
    CMS_SignerInfo* signer_ = nullptr;
    openssl::Bio content_;
};

class OpensslSigner final : public Signer {
  public:
    OpensslSigner(std::shared_ptr<openssl::LegacyLibrary> library, openssl::Pfx pfx)
        : library_(std::move(library)), pfx_(std::move(pfx)) {}

    base::Text name() const override {
        return openssl::name_for_people(X509_get_subject_name(pfx_.certificate.get()));
    }
    // A key that is only for PSS gives signatures that PDF readers do not check.
    bool can_sign() const override {
        return EVP_PKEY_is_a(pfx_.key.get(), "RSA") == 1 ||
               EVP_PKEY_is_a(pfx_.key.get(), "EC") == 1;
    }
    std::unique_ptr<DetachedSignature> begin(const base::DateTime& moment,
                                             SigningTime time) override {
        return std::make_unique<OpensslSignature>(library_->get(), pfx_, moment, time);
    }

  private:
    // Before the key, which needs it until it is gone.
    std::shared_ptr<openssl::LegacyLibrary> library_;
    openssl::Pfx pfx_;
};

int read_content(BIO* bio, char* buffer, std::size_t size, std::size_t* got) {
    const auto& content = *static_cast<const ContentReader*>(BIO_get_data(bio));
    *got = content({reinterpret_cast<std::uint8_t*>(buffer), size});
    return *got > 0 ? 1 : 0;
}

long control_content(BIO*, int command, long, void*) {
    return command == BIO_CTRL_FLUSH ? 1 : 0;
}

int begin_content(BIO* bio) {
    BIO_set_init(bio, 1);
    return 1;
}

Store store_of(std::string_view trusted) {
    Store store(X509_STORE_new());
    const openssl::Bio bio(BIO_new_mem_buf(trusted.data(), static_cast<int>(trusted.size())));
    openssl::check(store && bio, "X509_STORE_new");
    while (const openssl::Certificate one{
        PEM_read_bio_X509(bio.get(), nullptr, nullptr, const_cast<char*>(""))}) {
        X509_STORE_add_cert(store.get(), one.get());
    }
    ERR_clear_error();
    return store;
}

bool leads_to(X509* certificate, STACK_OF(X509) * others, std::string_view trusted) {
    if (trusted.empty()) return false;
    const Store store = store_of(trusted);
    const StoreContext context(X509_STORE_CTX_new());
    const bool good = context &&
                      X509_STORE_CTX_init(context.get(), store.get(), certificate, others) == 1 &&
                      X509_verify_cert(context.get()) == 1;
    ERR_clear_error();
    return good;
}

class OpensslSigning final : public Signing {
  public:
    std::unique_ptr<Signer> load_pfx(base::ByteView pfx,
                                     std::span<const base::SecretBytes> passwords) override {
        auto library = std::make_shared<openssl::LegacyLibrary>();
        openssl::Pfx read = openssl::read_pfx(*library, pfx, passwords);
        return std::make_unique<OpensslSigner>(std::move(library), std::move(read));
    }

    SignatureFindings verify(base::ByteView signature, const ContentReader& content,
                             std::string_view trusted) override {
        openssl::check(signature.size() <= LONG_MAX, "CMS: too large");
        const unsigned char* at = signature.data();
        const openssl::Cms cms(
            d2i_CMS_ContentInfo(nullptr, &at, static_cast<long>(signature.size())));
        openssl::check(cms != nullptr, "d2i_CMS_ContentInfo");
        const BioKind kind(BIO_meth_new(BIO_TYPE_SOURCE_SINK, "content"));
        openssl::check(kind && BIO_meth_set_read_ex(kind.get(), read_content) == 1 &&
                           BIO_meth_set_ctrl(kind.get(), control_content) == 1 &&
                           BIO_meth_set_create(kind.get(), begin_content) == 1,
                       "BIO_meth_new");
        const openssl::Bio bio(BIO_new(kind.get()));
        openssl::check(bio != nullptr, "BIO_new");
        BIO_set_data(bio.get(), const_cast<ContentReader*>(&content));
        SignatureFindings found;
        found.intact = CMS_verify(cms.get(), nullptr, nullptr, bio.get(), nullptr,
                                  CMS_BINARY | CMS_DETACHED | CMS_NO_SIGNER_CERT_VERIFY) == 1;
        ERR_clear_error();
        const openssl::Certificates inside(CMS_get1_certs(cms.get()));
        const BorrowedCertificates signers(CMS_get0_signers(cms.get()));
        if (signers && sk_X509_num(signers.get()) > 0) {
            X509* const signer = sk_X509_value(signers.get(), 0);
            found.signer = openssl::name_for_people(X509_get_subject_name(signer));
            found.issuer = openssl::name_for_people(X509_get_issuer_name(signer));
            found.trusted = leads_to(signer, inside.get(), trusted);
        }
        return found;
    }

    base::Bytes aes_cbc_with_iv(base::ByteView key, base::ByteView plain) override {
        constexpr int block = 16;
        openssl::check(key.size() == 16 || key.size() == 32, "AES: key of the wrong length");
        openssl::check(plain.size() <= INT_MAX - 2 * block, "AES: too much data");
        base::Bytes result(plain.size() + 2 * block);
        fill_random(std::span(result).first(block));
        const Cipher context(EVP_CIPHER_CTX_new());
        int body = 0;
        int rest = 0;
        openssl::check(
            context &&
                EVP_EncryptInit_ex(context.get(),
                                   key.size() == 16 ? EVP_aes_128_cbc() : EVP_aes_256_cbc(),
                                   nullptr, key.data(), result.data()) == 1 &&
                EVP_EncryptUpdate(context.get(), result.data() + block, &body, plain.data(),
                                  static_cast<int>(plain.size())) == 1 &&
                EVP_EncryptFinal_ex(context.get(), result.data() + block + body, &rest) == 1,
            "EVP_Encrypt");
        result.resize(static_cast<std::size_t>(block + body + rest));
        return result;
    }

    void fill_random(std::span<std::uint8_t> bytes) override {
        openssl::check(bytes.size() <= INT_MAX &&
                           RAND_bytes(bytes.data(), static_cast<int>(bytes.size())) == 1,
                       "RAND_bytes");
    }

    base::DateTime now_utc() override {
        using namespace std::chrono;
        const std::int64_t now =
            duration_cast<seconds>(system_clock::now().time_since_epoch()).count();
        constexpr std::int64_t day = 24 * 60 * 60;
        base::DateTime moment = base::civil_from_days(now / day);
        const auto second = static_cast<int>(now % day);
        moment.hour = second / 3600;
        moment.minute = second / 60 % 60;
        moment.second = second % 60;
        return moment;
    }
};

}  // namespace

std::unique_ptr<Signing> make_openssl_signing() {
    start_openssl();
    return std::make_unique<OpensslSigning>();
}

}  // namespace tavrix::ports
