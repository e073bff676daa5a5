#include "sandbox/service/certificates.h"

#include <openssl/x509v3.h>

#include <algorithm>
#include <stdexcept>

#include "sandbox/basics/certificates.h"
#include "sandbox/basics/ksef_number.h"
#include "sandbox/basics/text.h"
#include "sandbox/exchange/body.h"
#include "sandbox/service/operations.h"

namespace tavrix::sandbox {
namespace {

constexpr std::string_view types[] = {"Authentication", "Offline"};
constexpr std::string_view statuses[] = {"Active", "Blocked", "Revoked", "Expired"};
// Source: CertificateListItem of the contract.
constexpr std::size_t serial_digits = 16;
constexpr std::size_t longest_certificate_name = 100;

bool is_serial(std::string_view text) {
    return text.size() == serial_digits &&
           text.find_first_not_of("0123456789ABCDEF") == std::string_view::npos;
}

std::string serial_of(const X509* certificate) {
    const ASN1_INTEGER* number = X509_get0_serialNumber(certificate);
    std::uint64_t value = 0;
    if (ASN1_INTEGER_get_uint64(&value, number) != 1)
        throw std::invalid_argument("the serial number has more than 16 hexadecimal digits");
    std::string text(serial_digits, '0');
    for (std::size_t at = serial_digits; value != 0; value >>= 4)
        text[--at] = "0123456789ABCDEF"[value & 15];
    return text;
}

std::string subject_text(const X509* certificate, int field) {
    X509_NAME* subject = X509_get_subject_name(certificate);
    const int at = X509_NAME_get_index_by_NID(subject, field, -1);
    if (at < 0) return {};
    unsigned char* text = nullptr;
    const int size =
        ASN1_STRING_to_UTF8(&text, X509_NAME_ENTRY_get_data(X509_NAME_get_entry(subject, at)));
    if (size < 0) return {};
    std::string result(reinterpret_cast<char*>(text), std::size_t(size));
    OPENSSL_free(text);
    return result;
}

std::string company_of(const X509* certificate) {
    for (const int field : {NID_organizationIdentifier, NID_serialNumber}) {
        const std::string text = subject_text(certificate, field);
        for (const std::string_view prefix : {"VATPL-", "TINPL-"})
            if (text.starts_with(prefix) && is_nip(text.substr(prefix.size())))
                return text.substr(prefix.size());
    }
    return {};
}

const char* status_of(const Certificate& certificate, Instant now) {
    if (certificate.revoked) return "Revoked";
    return certificate.valid_to < now ? "Expired" : "Active";
}

/// The filters of a query; empty texts admit everything.
struct CertificateFilter {
    std::string serial, name, type, status;
    std::optional<Instant> expires_after;

    bool admits(const Certificate& it, Instant now) const {
        return (serial.empty() || it.serial == serial) &&
               lower_polish(it.name).find(lower_polish(name)) != std::string::npos &&
               (type.empty() || it.type == type) &&
               (status.empty() || status_of(it, now) == status) &&
               (!expires_after || it.valid_to > *expires_after);
    }
};

CertificateFilter read_certificate_filter(const Request& request) {
    CertificateFilter filter;
    if (request.body.empty()) return filter;
    const Json body = read_body(request);
    filter.serial = optional_text(body, "certificateSerialNumber");
    filter.name = optional_text(body, "name");
    filter.type = optional_text(body, "type");
    filter.status = optional_text(body, "status");
    const std::string after = optional_text(body, "expiresAfter");
    if (!filter.serial.empty() && !is_serial(filter.serial))
        throw wrong_format("certificateSerialNumber");
    if (!filter.type.empty() && !contains(types, filter.type)) throw unknown_value("type");
    if (!filter.status.empty() && !contains(statuses, filter.status)) throw unknown_value("status");
    filter.expires_after = parse_instant(after);
    if (!after.empty() && !filter.expires_after) throw wrong_format("expiresAfter");
    return filter;
}

}  // namespace

const Certificate& register_certificate(Service& service, const CertificateClaim& claim) {
    CertificateHandle handle;
    try {
        handle = read_certificate(claim.pem);
    } catch (const std::runtime_error& error) {
        throw std::invalid_argument(error.what());
    }
    Certificate certificate;
    certificate.serial = serial_of(handle.get());
    certificate.common_name = subject_text(handle.get(), NID_commonName);
    certificate.name = claim.name.empty() ? certificate.common_name : claim.name;
    if (character_count(certificate.name) > longest_certificate_name)
        throw std::invalid_argument("the name has more than 100 characters");
    certificate.nip = claim.nip.empty() ? company_of(handle.get()) : claim.nip;
    if (!is_nip(certificate.nip))
        throw std::invalid_argument("the certificate's subject names no tax number, nor does nip");
    const bool vouches = (X509_get_key_usage(handle.get()) & KU_NON_REPUDIATION) != 0;
    certificate.type = claim.type.empty() ? (vouches ? "Offline" : "Authentication") : claim.type;
    if (!contains(types, certificate.type))
        throw std::invalid_argument("type is Offline or Authentication");
    const Validity validity = certificate_validity(handle.get());
    certificate.valid_from = validity.from;
    certificate.valid_to = validity.to;
    certificate.requested = service.now();
    certificate.revoked = claim.revoked;
    service.save(certificate);
    return service.state.certificates[certificate.serial] = certificate;
}

Json certificate_json(const Service& service, const Certificate& it) {
    return {{"certificateSerialNumber", it.serial},
            {"name", it.name},
            {"type", it.type},
            {"commonName", it.common_name},
            {"status", status_of(it, service.now())},
            {"subjectIdentifier", {{"type", "Nip"}, {"value", it.nip}}},
            {"validFrom", service.time_text(it.valid_from)},
            {"validTo", service.time_text(it.valid_to)},
            {"requestDate", service.time_text(it.requested)}};
}

Answer query_certificates(Service& service, Request& request) {
    const CertificateFilter filter = read_certificate_filter(request);
    const std::size_t size = requested_page_size(request, 50);
    const auto offset = number_of<std::uint32_t>(request.parameter("pageOffset").value_or("0"));
    if (!offset) throw invalid_input("Parametr 'pageOffset' ma nieprawidłową wartość.");
    // A certificate belongs to who signed in, not to a context; with a token these are the same.
    const std::string nip = service.authentication_of(request).context.nip();
    std::vector<const Certificate*> found;
    for (const auto& [serial, certificate] : service.state.certificates)
        if (certificate.nip == nip && filter.admits(certificate, service.now()))
            found.push_back(&certificate);
    std::stable_sort(found.begin(), found.end(), [](const Certificate* a, const Certificate* b) {
        return a->requested > b->requested;
    });
    const std::size_t from = std::min(*offset * size, found.size()),
                      to = std::min(from + size, found.size());
    Json list = Json::array();
    for (std::size_t i = from; i < to; ++i) list.push_back(certificate_json(service, *found[i]));
    return Answer::json(200, {{"certificates", list}, {"hasMore", to < found.size()}});
}

}  // namespace tavrix::sandbox
