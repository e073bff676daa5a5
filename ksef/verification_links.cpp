#include "ksef/verification_links.h"

#include <cstdio>

#include "base/base64.h"
#include "base/error.h"

namespace tavrix::ksef {
namespace {

using base::Text;
using base::TextView;

constexpr std::string_view curve_of_page = "prime256v1";

bool is_encrypted(const base::SecretUtf8& pem) {
    const auto has = [&](std::string_view mark) {
        return pem.view().find(mark) != pem.view().npos;
    };
    return has("BEGIN ENCRYPTED PRIVATE KEY") || has("Proc-Type: 4,ENCRYPTED");
}

Text joined(std::initializer_list<TextView> elements) {
    Text link;
    for (const TextView element : elements) {
        if (!link.empty()) link += u'/';
        link += element;
    }
    return link;
}

}  // namespace

Text base64url(TextView base64) {
    Text encoded = base::remove_characters(base64, u"=");
    for (char16_t& c : encoded) {
        if (c == u'+') c = u'-';
        if (c == u'/') c = u'_';
    }
    return encoded;
}

bool is_invoice_hash(TextView text) {
    const auto bytes = base::base64_decode(base::to_utf8(text));
    return bytes && bytes->size() == 32 && text.size() == 44;
}

Text invoice_link(TextView origin, TextView seller, const base::DateTime& issued, TextView hash) {
    char date[40];
    std::snprintf(date, sizeof date, "%02d-%02d-%04d", issued.day, issued.month, issued.year);
    return joined({origin, u"invoice", seller, base::from_utf8(date), base64url(hash)});
}

Text unsigned_link(const CertificateLink& link) {
    return joined({link.origin, u"certificate", link.context_type, link.context, link.seller,
                   link.certificate_serial, base64url(link.hash)});
}

std::string signed_part(const Text& unsigned_link) {
    TextView part = unsigned_link;
    for (const TextView scheme : {u"https://", u"http://"}) {
        if (base::find_case_blind(part, scheme) == 0) part.remove_prefix(scheme.size());
    }
    return base::to_utf8(part);
}

Text with_signature(const Text& unsigned_link, base::ByteView signature,
                    CertificateSignature form) {
    const Text base64 = base::from_utf8(base::base64_encode(signature));
    return joined(
        {unsigned_link, form == CertificateSignature::base64 ? base64 : base64url(base64)});
}

LinkKey read_link_key(ports::Crypto& crypto, const base::SecretUtf8& pem,
                      const base::SecretUtf8& pass_phrase) {
    try {
        LinkKey read{crypto.load_private_key(pem.view(), pass_phrase.view()), {}};
        if (!read.key) read.failure = u"Brak EC prywatnego klucza";
        return read;
    } catch (const base::AutomationError& error) {
        const TextView kind =
            is_encrypted(pem) ? u"err:Hasło nie otwiera klucza prywatnego: " : u"BŁĄD PEM: ";
        return {nullptr, Text(kind) + error.description()};
    }
}

base::Bytes sign_link(ports::Crypto& crypto, const ports::PrivateKey& key,
                      const Text& unsigned_link) {
    if (key.curve() != curve_of_page) {
        throw base::AutomationError(base::ErrorNumber::component_failed, u"KseF_comm",
                                    u"krzywa klucza to " + base::from_utf8(key.curve()) +
                                        u", potrzebna jest P-256 (prime256v1)");
    }
    return crypto.ecdsa_sha256_sign(key, base::bytes_of(signed_part(unsigned_link)));
}

}  // namespace tavrix::ksef
