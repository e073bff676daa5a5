// Key pairs and X.509 certificates the sandbox makes for itself.
#pragma once

#include <string>
#include <string_view>

#include "sandbox/basics/clock.h"
#include "sandbox/basics/openssl_handles.h"

namespace tavrix::sandbox {

/// A private key and its certificate, both as PEM.
struct KeyPair {
    std::string private_key_pem;
    std::string certificate_pem;
};

struct Validity {
    Instant from;
    Instant to;
};

/// A self-signed certificate over a new RSA key of 2048 bits. Throws std::runtime_error when
/// OpenSSL fails.
KeyPair make_encryption_certificate(std::string_view common_name, Validity validity);

/// What an HTTPS server on loopback needs: its own authority and a certificate for 127.0.0.1, ::1
/// and localhost issued by it.
struct ServerIdentity {
    std::string authority_pem;
    KeyPair server;
};
ServerIdentity make_server_identity(Validity validity);

KeyHandle read_private_key(std::string_view pem);
CertificateHandle read_certificate(std::string_view pem);
std::string certificate_der(const X509* certificate);
/// The SubjectPublicKeyInfo of a certificate.
std::string public_key_der(const X509* certificate);
Validity certificate_validity(const X509* certificate);

}  // namespace tavrix::sandbox
