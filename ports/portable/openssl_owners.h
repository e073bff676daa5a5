#pragma once

#include <openssl/cms.h>
#include <openssl/crypto.h>
#include <openssl/pkcs12.h>
#include <openssl/provider.h>
#include <openssl/x509.h>

#include <memory>

namespace tavrix::ports::openssl {

template <auto release>
struct Release {
    void operator()(auto* object) const { release(object); }
};

inline void free_certificates(STACK_OF(X509) * certificates) {
    sk_X509_pop_free(certificates, X509_free);
}
inline void unload(OSSL_PROVIDER* provider) {
    OSSL_PROVIDER_unload(provider);
}

using Library = std::unique_ptr<OSSL_LIB_CTX, Release<OSSL_LIB_CTX_free>>;
using Provider = std::unique_ptr<OSSL_PROVIDER, Release<unload>>;
using Bio = std::unique_ptr<BIO, Release<BIO_free_all>>;
using Key = std::unique_ptr<EVP_PKEY, Release<EVP_PKEY_free>>;
using Certificate = std::unique_ptr<X509, Release<X509_free>>;
using Certificates = std::unique_ptr<STACK_OF(X509), Release<free_certificates>>;
using Cms = std::unique_ptr<CMS_ContentInfo, Release<CMS_ContentInfo_free>>;

/// Throws base::AutomationError with `operation` and OpenSSL's last words, whose queue of errors is
/// left empty.
[[noreturn]] void fail(const char* operation);
/// The same unless `succeeded`.
void check(bool succeeded, const char* operation);

}  // namespace tavrix::ports::openssl
