// KSeF certificates of companies: the sandbox issues none, it is told of those that clients sign
// with.
#pragma once

#include "sandbox/service/service.h"

namespace tavrix::sandbox {

/// What people say about a certificate beside its text.
struct CertificateClaim {
    std::string pem;
    /// Of the company it belongs to; empty when the subject names it (`VATPL-` or `TINPL-` and a
    /// tax number in organizationIdentifier or serialNumber).
    std::string nip;
    /// Empty for the common name of the subject.
    std::string name;
    /// Empty for what its key may be used for: Offline when it may vouch for content.
    std::string type;
    bool revoked = false;
};

/// Replaces what is known of the same serial number. Throws std::invalid_argument for what is no
/// certificate, has a serial number that KSeF could not have given, or names no company.
const Certificate& register_certificate(Service& service, const CertificateClaim& claim);

/// As the query answers with it.
Json certificate_json(const Service& service, const Certificate& certificate);

}  // namespace tavrix::sandbox
