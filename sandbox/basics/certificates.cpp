#include "sandbox/basics/certificates.h"

#include <openssl/pem.h>
#include <openssl/rsa.h>
#include <openssl/x509v3.h>

#include <stdexcept>

#include "sandbox/basics/crypto.h"

namespace tavrix::sandbox {
namespace {

void require(bool done, const char* what) {
    if (!done) throw std::runtime_error(std::string("OpenSSL could not ") + what);
}

KeyHandle generate_key() {
    KeyHandle key(EVP_RSA_gen(2048));
    require(key != nullptr, "generate an RSA key");
    return key;
}

KeyPair pem_of(const EVP_PKEY* key, const X509* certificate) {
    const auto text = [](auto write) {
        const BioHandle memory(BIO_new(BIO_s_mem()));
        require(write(memory.get()) == 1, "write PEM");
        char* data = nullptr;
        const long size = BIO_get_mem_data(memory.get(), &data);
        return std::string(data, std::size_t(size));
    };
    return {text([&](BIO* to) {
                return PEM_write_bio_PrivateKey(to, key, nullptr, nullptr, 0, nullptr, nullptr);
            }),
            text([&](BIO* to) { return PEM_write_bio_X509(to, certificate); })};
}

void set_name(X509_NAME* name, std::string_view common_name) {
    const auto add = [name](const char* field, std::string_view value) {
        X509_NAME_add_entry_by_txt(name, field, MBSTRING_UTF8,
                                   reinterpret_cast<const unsigned char*>(value.data()),
                                   int(value.size()), -1, 0);
    };
    add("C", "PL");
    add("O", "Tavrix sandbox");
    add("CN", common_name);
}

void add_extension(X509* certificate, X509* issuer, int nid, const char* value) {
    X509V3_CTX context;
    X509V3_set_ctx_nodb(&context);
    X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
    X509_EXTENSION* extension = X509V3_EXT_conf_nid(nullptr, &context, nid, value);
    require(extension != nullptr, "make a certificate extension");
    X509_add_ext(certificate, extension, -1);
    X509_EXTENSION_free(extension);
}

/// An unsigned certificate with everything but extensions and signature.
CertificateHandle blank_certificate(EVP_PKEY* key, std::string_view common_name,
                                    Validity validity) {
    CertificateHandle certificate(X509_new());
    X509_set_version(certificate.get(), 2);
    const std::string serial = random_bytes(15);
    BIGNUM* number = BN_bin2bn(reinterpret_cast<const unsigned char*>(serial.data()), 15, nullptr);
    BN_to_ASN1_INTEGER(number, X509_get_serialNumber(certificate.get()));
    BN_free(number);
    ASN1_TIME_set(X509_getm_notBefore(certificate.get()), time_t(unix_ms(validity.from) / 1000));
    ASN1_TIME_set(X509_getm_notAfter(certificate.get()), time_t(unix_ms(validity.to) / 1000));
    set_name(X509_get_subject_name(certificate.get()), common_name);
    X509_set_pubkey(certificate.get(), key);
    return certificate;
}

void sign(X509* certificate, const X509* issuer, EVP_PKEY* issuer_key) {
    X509_set_issuer_name(certificate, X509_get_subject_name(issuer));
    require(X509_sign(certificate, issuer_key, EVP_sha256()) > 0, "sign a certificate");
}

template <typename Object>
std::string der_of(const Object* object, int (*encode)(const Object*, unsigned char**)) {
    const int size = encode(object, nullptr);
    require(size > 0, "encode what a certificate holds");
    std::string der(std::size_t(size), '\0');
    auto* out = reinterpret_cast<unsigned char*>(der.data());
    encode(object, &out);
    return der;
}

Instant instant_of(const ASN1_TIME* time) {
    tm broken{};
    require(ASN1_TIME_to_tm(time, &broken) == 1, "read a certificate's validity");
    using namespace std::chrono;
    const year_month_day day{year(broken.tm_year + 1900), month(unsigned(broken.tm_mon + 1)),
                             std::chrono::day(unsigned(broken.tm_mday))};
    return sys_days(day) + hours(broken.tm_hour) + minutes(broken.tm_min) + seconds(broken.tm_sec);
}

}  // namespace

KeyPair make_encryption_certificate(std::string_view common_name, Validity validity) {
    const KeyHandle key = generate_key();
    const CertificateHandle certificate = blank_certificate(key.get(), common_name, validity);
    add_extension(certificate.get(), certificate.get(), NID_key_usage,
                  "critical,keyEncipherment,dataEncipherment");
    sign(certificate.get(), certificate.get(), key.get());
    return pem_of(key.get(), certificate.get());
}

ServerIdentity make_server_identity(Validity validity) {
    const KeyHandle authority_key = generate_key();
    const CertificateHandle authority =
        blank_certificate(authority_key.get(), "Tavrix sandbox authority", validity);
    add_extension(authority.get(), authority.get(), NID_basic_constraints, "critical,CA:TRUE");
    add_extension(authority.get(), authority.get(), NID_key_usage, "critical,keyCertSign,cRLSign");
    add_extension(authority.get(), authority.get(), NID_subject_key_identifier, "hash");
    sign(authority.get(), authority.get(), authority_key.get());

    const KeyHandle key = generate_key();
    const CertificateHandle certificate = blank_certificate(key.get(), "localhost", validity);
    add_extension(certificate.get(), authority.get(), NID_basic_constraints, "critical,CA:FALSE");
    add_extension(certificate.get(), authority.get(), NID_key_usage,
                  "critical,digitalSignature,keyEncipherment");
    add_extension(certificate.get(), authority.get(), NID_ext_key_usage, "serverAuth");
    add_extension(certificate.get(), authority.get(), NID_authority_key_identifier, "keyid");
    add_extension(certificate.get(), authority.get(), NID_subject_alt_name,
                  "DNS:localhost,IP:127.0.0.1,IP:::1");
    sign(certificate.get(), authority.get(), authority_key.get());
    return {pem_of(authority_key.get(), authority.get()).certificate_pem,
            pem_of(key.get(), certificate.get())};
}

KeyHandle read_private_key(std::string_view pem) {
    const BioHandle memory(BIO_new_mem_buf(pem.data(), int(pem.size())));
    KeyHandle key(PEM_read_bio_PrivateKey(memory.get(), nullptr, nullptr, nullptr));
    require(key != nullptr, "read a private key");
    return key;
}

CertificateHandle read_certificate(std::string_view pem) {
    const BioHandle memory(BIO_new_mem_buf(pem.data(), int(pem.size())));
    CertificateHandle certificate(PEM_read_bio_X509(memory.get(), nullptr, nullptr, nullptr));
    require(certificate != nullptr, "read a certificate");
    return certificate;
}

std::string certificate_der(const X509* certificate) {
    return der_of(certificate, i2d_X509);
}

std::string public_key_der(const X509* certificate) {
    return der_of(X509_get_X509_PUBKEY(certificate), i2d_X509_PUBKEY);
}

Validity certificate_validity(const X509* certificate) {
    return {instant_of(X509_get0_notBefore(certificate)),
            instant_of(X509_get0_notAfter(certificate))};
}

}  // namespace tavrix::sandbox
