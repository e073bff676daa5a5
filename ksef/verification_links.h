#pragma once

#include "base/date_time.h"
#include "base/secret.h"
#include "ksef/settings.h"
#include "ports/crypto.h"

/// The addresses behind an invoice's QR codes, as the ministry publishes them (Kody weryfikujące
/// QR, KOD I and KOD II).
namespace tavrix::ksef {

/// Base64 as links carry it (RFC 4648, 5), without padding.
base::Text base64url(base::TextView base64);

/// Whether `text` is the Base64 of a SHA-256. A hash that a narrow column cut is none.
bool is_invoice_hash(base::TextView text);

/// KOD I, where everybody sees whether KSeF has the invoice. `origin` has no trailing slash, `hash`
/// is in Base64; the date is written DD-MM-YYYY.
base::Text invoice_link(base::TextView origin, base::TextView seller, const base::DateTime& issued,
                        base::TextView hash);

/// KOD II, which proves who issued an invoice that KSeF has not yet. The context is whose session
/// sends the invoice; self-invoicing has another one than the seller.
struct CertificateLink {
    base::TextView origin;
    base::TextView context_type;
    base::TextView context;
    base::TextView seller;
    base::TextView certificate_serial;
    base::TextView hash;  ///< Base64
};

/// The type of a context that is named by its tax number, as each form writes it.
constexpr base::TextView tax_number_context(CertificateSignature form) {
    return form == CertificateSignature::base64 ? u"NIP" : u"Nip";
}

/// What the signature is put behind.
base::Text unsigned_link(const CertificateLink& link);
/// What is signed, in UTF-8: the unsigned link from its host on.
std::string signed_part(const base::Text& unsigned_link);
/// The whole link.
base::Text with_signature(const base::Text& unsigned_link, base::ByteView signature,
                          CertificateSignature form);

/// A private key read from PEM, or why there is none.
struct LinkKey {
    std::unique_ptr<ports::PrivateKey> key;
    base::Text failure;
};

/// The failure is "BŁĄD PEM: " and the reason where the PEM cannot be read, "err:" and the reason
/// where its pass phrase does not open it, "Brak EC prywatnego klucza" where there is no key.
LinkKey read_link_key(ports::Crypto& crypto, const base::SecretUtf8& pem,
                      const base::SecretUtf8& pass_phrase);

/// ECDSA with P-256, the one curve that the verification page knows. Throws base::AutomationError.
base::Bytes sign_link(ports::Crypto& crypto, const ports::PrivateKey& key,
                      const base::Text& unsigned_link);

}  // namespace tavrix::ksef
