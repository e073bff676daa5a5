#include "sandbox/service/operations.h"

#include <algorithm>

#include "sandbox/basics/crypto.h"
#include "sandbox/basics/ksef_number.h"
#include "sandbox/exchange/body.h"
#include "sandbox/service/download_links.h"
#include "sandbox/service/processing.h"
#include "sandbox/store/statuses.h"

namespace tavrix::sandbox {
namespace {

// Source: the contract, /limits/context, and "Weryfikacja faktury" for the size with attachments.
constexpr std::int64_t largest_declared_size = 3'000'000;

Json invoice_json(Service& service, const Request& request, Invoice& invoice) {
    const Status status = observe(service, invoice);
    const bool accepted = !invoice.ksef_number.empty();
    Json json = {{"ordinalNumber", invoice.ordinal}};
    if (service.options.classic_order) json["referenceNumber"] = invoice.reference;
    if (service.options.classic_order && accepted) json["ksefNumber"] = invoice.ksef_number;
    // What stands there already keeps its place.
    if (accepted) {
        json["invoiceNumber"] = invoice.summary->invoice_number;
        json["ksefNumber"] = invoice.ksef_number;
    }
    json["referenceNumber"] = invoice.reference;
    json["invoiceHash"] = invoice.invoice_hash;
    if (!invoice.file_name.empty()) json["invoiceFileName"] = invoice.file_name;
    if (accepted) json["acquisitionDate"] = service.time_text(invoice.acquired);
    json["invoicingDate"] = service.time_text(invoice.received);
    if (accepted) {
        const StorageLink link = invoice_upo_link(service, request, invoice);
        json["permanentStorageDate"] = service.time_text(invoice.stored);
        json["upoDownloadUrl"] = link.url;
        json["upoDownloadUrlExpirationDate"] = service.time_text(link.valid_until);
        json["invoicingMode"] = mode_name(invoice);
    }
    json["status"] = status;
    return json;
}

Answer invoice_list(Service& service, const Request& request,
                    const std::vector<std::string>& references) {
    return list_answer(request, 1000, "invoices", references, [&](const std::string& reference) {
        return invoice_json(service, request, service.state.invoices.at(reference));
    });
}

/// An invoice of the session in the path. The contract knows no code of its own for an unknown one,
/// nor, where an invoice is asked for, for an unknown session.
Invoice& invoice_of(Service& service, Request& request) {
    const Session* session = service.find_session(request);
    const std::string& reference = reference_parameter(request, 1);
    Invoice* invoice = look_up(service.state.invoices, reference);
    if (session == nullptr || invoice == nullptr ||
        invoice->session_reference != session->reference)
        throw invalid_input("Faktura o numerze referencyjnym " + reference +
                            " nie została znaleziona w sesji.");
    return *invoice;
}

const std::string& ksef_number_parameter(const Request& request, std::size_t index) {
    const std::string& number = request.parameters.at(index);
    if (!has_ksef_number_form(number)) throw invalid_input("Nieprawidłowy numer KSeF.");
    return number;
}

/// True when one of the invoices under a hash was sent in the context and accepted.
bool any_accepted(const State& state,
                  const std::unordered_multimap<std::string, std::string>& index,
                  const std::string& hash, const Context& context) {
    const auto [from, to] = index.equal_range(hash);
    return std::any_of(from, to, [&](const auto& entry) {
        const Invoice& invoice = state.invoices.at(entry.second);
        return invoice.status.code == 200 &&
               state.sessions.at(invoice.session_reference).context == context;
    });
}

/// A technical correction replaces a rejected offline invoice, once.
void check_correction(const State& state, const Context& context, const std::string& hash) {
    if (any_accepted(state, state.invoices_by_hash, hash, context))
        throw bad_request(
            ErrorCode::correction_not_allowed,
            "Nie można wysłać korekty technicznej do prawidłowo przetworzonej faktury.");
    if (any_accepted(state, state.corrections_by_hash, hash, context))
        throw bad_request(ErrorCode::correction_already_done,
                          "Faktura posiada już przetworzoną prawidłowo korektę techniczną.");
}

void check_session_takes_invoices(const Session& session) {
    if (session.stage != SessionStage::open || session.kind != SessionKind::online)
        throw bad_request(ErrorCode::session_status, "Status sesji " +
                                                         std::to_string(session.status.code) +
                                                         " uniemożliwia wysyłkę faktur.");
    if (session.invoices.size() >= most_invoices_per_session)
        throw bad_request(ErrorCode::invoice_limit_reached,
                          "Sesja o numerze referencyjnym " + session.reference +
                              " osiągnęła dozwolony limit liczby faktur " +
                              std::to_string(most_invoices_per_session) + ".");
}

}  // namespace

Answer send_invoice(Service& service, Request& request) {
    reference_parameter(request, 0);  // refused before the body is looked at
    const Json body = read_body(request);
    Invoice invoice;
    invoice.invoice_hash = required_hash(body, "invoiceHash");
    invoice.invoice_size = required_count(body, "invoiceSize");
    const std::string encrypted_hash = required_hash(body, "encryptedInvoiceHash");
    const std::int64_t encrypted_size = required_count(body, "encryptedInvoiceSize");
    invoice.encrypted = required_bytes(body, "encryptedInvoiceContent");
    invoice.offline_declared = optional_flag(body, "offlineMode");
    if (given(body, "hashOfCorrectedInvoice") != nullptr)
        invoice.hash_of_corrected = required_hash(body, "hashOfCorrectedInvoice");

    Session& session = service.session_of(request, "odnaleziona");
    check_session_takes_invoices(session);
    if (invoice.invoice_size > largest_declared_size)
        throw invalid_input("Rozmiar faktury przekracza dozwolone " +
                            std::to_string(largest_declared_size) + " bajtów.");
    if (encrypted_size != std::int64_t(invoice.encrypted.size()))
        throw bad_request(ErrorCode::wrong_size,
                          "Długość treści nie zgadza się z rozmiarem pliku.");
    if (encrypted_hash != sha256_base64(invoice.encrypted))
        throw bad_request(ErrorCode::wrong_hash, "Skrót treści nie zgadza się ze skrótem pliku.");
    if (!invoice.hash_of_corrected.empty()) {
        if (!invoice.offline_declared)
            throw invalid_input("Korekta techniczna wymaga trybu offline (offlineMode).");
        check_correction(service.state, session.context, invoice.hash_of_corrected);
    }

    invoice.reference = service.new_reference("EE");
    invoice.session_reference = session.reference;
    invoice.ordinal = int(session.invoices.size()) + 1;
    invoice.received = invoice.stage_since = session.updated = service.now();
    invoice.status = make_status(StatusOf::invoice, 100);
    session.invoices.push_back(invoice.reference);
    const Invoice& kept = service.state.add(std::move(invoice));
    service.save(kept);
    service.save(session);
    return Answer::json(202, {{"referenceNumber", kept.reference}});
}

Answer list_session_invoices(Service& service, Request& request) {
    const Session& session = service.session_of(request);
    return invoice_list(service, request, session.invoices);
}

Answer list_failed_invoices(Service& service, Request& request) {
    const Session& session = service.session_of(request);
    std::vector<std::string> failed;
    for (const std::string& reference : session.invoices) {
        const Invoice& invoice = service.state.invoices.at(reference);
        if (invoice.stage == InvoiceStage::finished && invoice.status.code != 200)
            failed.push_back(reference);
    }
    return invoice_list(service, request, failed);
}

Answer invoice_status(Service& service, Request& request) {
    Invoice& invoice = invoice_of(service, request);
    return Answer::json(200, invoice_json(service, request, invoice));
}

Answer invoice_upo(Service& service, Request& request) {
    const Invoice& invoice = invoice_of(service, request);
    if (invoice.upo.empty())
        throw invalid_input("UPO faktury o numerze referencyjnym " + invoice.reference +
                            " nie zostało znalezione.");
    return hashed_xml(invoice.upo);
}

Answer invoice_upo_by_ksef_number(Service& service, Request& request) {
    const Session* session = service.find_session(request);
    const std::string& number = ksef_number_parameter(request, 1);
    const Invoice* invoice = service.state.accepted(number);
    if (session == nullptr || invoice == nullptr ||
        invoice->session_reference != session->reference)
        throw bad_request(ErrorCode::upo_not_found,
                          "UPO o numerze KSeF " + number + " i numerze referencyjnym sesji " +
                              request.parameters.at(0) + " nie zostało znalezione.");
    return hashed_xml(invoice->upo);
}

Answer session_upo(Service& service, Request& request) {
    const Session& session = service.session_of(request);
    const std::string& reference = reference_parameter(request, 1);
    if (session.upo_reference.empty() || session.upo_reference != reference)
        throw bad_request(ErrorCode::upo_not_found, "UPO o numerze referencyjnym " + reference +
                                                        " dla sesji " + session.reference +
                                                        " nie zostało znalezione.");
    return hashed_xml(session.upo);
}

Answer invoice_by_ksef_number(Service& service, Request& request) {
    const std::string& number = ksef_number_parameter(request, 0);
    const Invoice* invoice = service.state.accepted(number);
    const std::string nip = service.authentication_of(request).context.nip();
    if (invoice == nullptr || !concerns(*invoice->summary, nip))
        throw bad_request(ErrorCode::invoice_not_found,
                          "Faktura o numerze KSeF " + number + " nie została znaleziona.");
    return hashed_xml(invoice->xml);
}

}  // namespace tavrix::sandbox
