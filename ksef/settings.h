#pragma once

#include <chrono>

#include "base/profile.h"
#include "base/text.h"
#include "ports/xml_documents.h"

namespace tavrix::ksef {

/// One address for each KSeF environment; no trailing slash.
struct Origins {
    base::Text production;
    base::Text demo;
    base::Text test;
};

/// How GetUpo reads the service's lists: values by where they stand, or by their members' names.
enum class ReconcileBy { position, name };

/// How a certificate link is written: its signature in Base64 beside the type "NIP", as hosts know
/// it, or in Base64URL beside "Nip", as published. The type is part of the signed text.
enum class CertificateSignature { base64, base64url };

/// Where the service and its verification pages are, and how the hosts' calls deal with it.
struct Settings {
    Origins service{u"https://api.ksef.mf.gov.pl", u"https://api-demo.ksef.mf.gov.pl",
                    u"https://api-test.ksef.mf.gov.pl"};
    /// Replaces a leading "/api/v2" of every request path; empty leaves paths as they are. The
    /// ministry publishes "/v2".
    base::Text path_root;
    /// The longest `Retry-After` of an answer 429 that is waited out before the request is
    /// repeated; 0 takes every such answer for the failure that it is.
    std::chrono::seconds retry_after_limit{0};
    ReconcileBy reconcile_by = ReconcileBy::position;
    /// Whether fetching purchase invoices goes on behind one that the service does not give out
    /// (answers 21164, 21165, 406).
    bool skip_unavailable = false;
    /// Whether a package above 100 000 000 bytes is sent in parts.
    bool batch_parts = false;
    Origins qr{u"https://qr.ksef.mf.gov.pl", u"https://qr-demo.ksef.mf.gov.pl",
               u"https://qr-test.ksef.mf.gov.pl"};
    CertificateSignature certificate_signature = CertificateSignature::base64;
    /// How a schema is put before invoices.
    ports::SchemaNamespace schema_namespace = ports::SchemaNamespace::empty;
};

/// The settings of an installation that says no more than its profile.
inline Settings settings_of(base::Profile profile) {
    Settings settings;
    if (profile == base::Profile::current) {
        settings.path_root = u"/v2";
        settings.retry_after_limit = std::chrono::seconds(60);
        settings.reconcile_by = ReconcileBy::name;
        settings.skip_unavailable = true;
        settings.certificate_signature = CertificateSignature::base64url;
    }
    return settings;
}

}  // namespace tavrix::ksef
