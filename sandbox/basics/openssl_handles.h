// Owning pointers of the OpenSSL objects used here.
#pragma once

#include <openssl/bio.h>
#include <openssl/evp.h>
#include <openssl/x509.h>

#include <memory>

namespace tavrix::sandbox {

template <auto release>
struct OpenSslRelease {
    template <typename Handle>
    void operator()(Handle* handle) const {
        release(handle);
    }
};

using KeyHandle = std::unique_ptr<EVP_PKEY, OpenSslRelease<EVP_PKEY_free>>;
using KeyContextHandle = std::unique_ptr<EVP_PKEY_CTX, OpenSslRelease<EVP_PKEY_CTX_free>>;
using DigestContextHandle = std::unique_ptr<EVP_MD_CTX, OpenSslRelease<EVP_MD_CTX_free>>;
using CipherContextHandle = std::unique_ptr<EVP_CIPHER_CTX, OpenSslRelease<EVP_CIPHER_CTX_free>>;
using CertificateHandle = std::unique_ptr<X509, OpenSslRelease<X509_free>>;
using BioHandle = std::unique_ptr<BIO, OpenSslRelease<BIO_free_all>>;

}  // namespace tavrix::sandbox
