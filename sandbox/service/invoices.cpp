#include "sandbox/service/invoices.h"

#include "sandbox/basics/crypto.h"
#include "sandbox/basics/ksef_number.h"
#include "sandbox/exchange/body.h"
#include "sandbox/service/processing.h"
#include "sandbox/service/storage.h"
#include "sandbox/store/statuses.h"

namespace tavrix::sandbox {
namespace {

// Source: the contract, /limits/context, and "Weryfikacja faktury" for the size with attachments.
constexpr std::size_t most_invoices_per_session = 10'000;
constexpr std::int64_t largest_declared_size = 3'000'000;

Json invoice_json(Service& service, const Request& request, Invoice& invoice) {
    const Status status = observe(service, invoice);
    const bool accepted = !invoice.ksef_number.empty();
    Json json = {{"ordinalNumber", invoice.ordinal}};
    if (accepted) {
        json["invoiceNumber"] = invoice.summary->invoice_number;
        json["ksefNumber"] = invoice.ksef_number;
    }
    json["referenceNumber"] = invoice.reference;
    json["invoiceHash"] = invoice.invoice_hash;
    if (accepted) json["acquisitionDate"] = service.time_text(invoice.acquired);
    json["invoicingDate"] = service.time_text(invoice.received);
    if (accepted) {
        const StorageLink link = invoice_upo_link(service, request, invoice);
        json["permanentStorageDate"] = service.time_text(permanent_storage_date(invoice));
        json["upoDownloadUrl"] = link.url;
        json["upoDownloadUrlExpirationDate"] = service.time_text(link.valid_until);
        json["invoicingMode"] = invoice.offline ? "Offline" : "Online";
    }
    json["status"] = to_json(status);
    return json;
}

Answer invoice_page(Service& service, Request& request,
                    const std::vector<std::string>& references) {
    const Page page = page_of(request, references.size(), page_size(request, 10, 1000));
    Json answer = Json::object();
    if (!page.continuation_token.empty()) answer["continuationToken"] = page.continuation_token;
    answer["invoices"] = Json::array();
    for (std::size_t i = page.from; i < page.to; ++i)
        answer["invoices"].push_back(
            invoice_json(service, request, service.state.invoices.at(references[i])));
    return Answer::json(200, answer);
}

BadRequest invoice_unknown(const std::string& reference) {
    return invalid_input("Faktura o numerze referencyjnym " + reference +
                         " nie została znaleziona w sesji.");
}

/// An invoice of the session in the path. The contract knows no code of its own for an unknown one.
Invoice& invoice_of(Service& service, Request& request) {
    const Session& session = service.session_of(request, reference_parameter(request, 0));
    const std::string& reference = reference_parameter(request, 1);
    const auto found = service.state.invoices.find(reference);
    if (found == service.state.invoices.end() ||
        found->second.session_reference != session.reference)
        throw invoice_unknown(reference);
    return found->second;
}

const std::string& ksef_number_parameter(const Request& request, std::size_t index) {
    const std::string& number = request.parameters.at(index);
    if (!is_ksef_number(number)) throw invalid_input("Nieprawidłowy numer KSeF.");
    return number;
}

/// A technical correction replaces a rejected offline invoice, once.
void check_correction(const Service& service, const Context& context,
                      const std::string& corrected_hash) {
    const auto [from, to] = service.state.invoices_by_hash.equal_range(corrected_hash);
    for (auto it = from; it != to; ++it) {
        const Invoice& original = service.state.invoices.at(it->second);
        const bool own = service.state.sessions.at(original.session_reference).context == context;
        if (own && original.status.code == 200)
            throw BadRequest(
                ErrorCode::correction_not_allowed,
                {"Nie można wysłać korekty technicznej do prawidłowo przetworzonej faktury."});
    }
    const auto [first, last] = service.state.corrections_by_hash.equal_range(corrected_hash);
    for (auto it = first; it != last; ++it) {
        const Invoice& correction = service.state.invoices.at(it->second);
        if (correction.status.code == 200 &&
            service.state.sessions.at(correction.session_reference).context == context)
            throw BadRequest(ErrorCode::correction_already_done,
                             {"Faktura posiada już przetworzoną prawidłowo korektę techniczną."});
    }
}

void check_session_takes_invoices(const Session& session) {
    if (session.stage != SessionStage::open || session.kind != SessionKind::online)
        throw BadRequest(ErrorCode::session_status,
                         {"Status sesji " + std::to_string(session.status.code) +
                          " uniemożliwia wysyłkę faktur."});
    if (session.invoices.size() >= most_invoices_per_session)
        throw BadRequest(ErrorCode::invoice_limit_reached,
                         {"Sesja o numerze referencyjnym " + session.reference +
                          " osiągnęła dozwolony limit liczby faktur " +
                          std::to_string(most_invoices_per_session) + "."});
}

}  // namespace

Answer send_invoice(Service& service, Request& request) {
    const std::string& reference = reference_parameter(request, 0);
    const Json body = read_body(request);
    Invoice invoice;
    invoice.invoice_hash = required_hash(body, "invoiceHash");
    invoice.invoice_size = required_count(body, "invoiceSize");
    const std::string encrypted_hash = required_hash(body, "encryptedInvoiceHash");
    const std::int64_t encrypted_size = required_count(body, "encryptedInvoiceSize");
    invoice.encrypted = required_bytes(body, "encryptedInvoiceContent");
    invoice.offline_declared = optional_flag(body, "offlineMode");
    if (body.contains("hashOfCorrectedInvoice") && !body["hashOfCorrectedInvoice"].is_null())
        invoice.hash_of_corrected = required_hash(body, "hashOfCorrectedInvoice");

    Session& session = service.session_of(request, reference, "odnaleziona");
    check_session_takes_invoices(session);
    if (invoice.invoice_size > largest_declared_size)
        throw invalid_input("Rozmiar faktury przekracza dozwolone " +
                            std::to_string(largest_declared_size) + " bajtów.");
    if (encrypted_size != std::int64_t(invoice.encrypted.size()))
        throw BadRequest(ErrorCode::wrong_size,
                         {"Długość treści nie zgadza się z rozmiarem pliku."});
    if (encrypted_hash != sha256_base64(invoice.encrypted))
        throw BadRequest(ErrorCode::wrong_hash, {"Skrót treści nie zgadza się ze skrótem pliku."});
    if (!invoice.hash_of_corrected.empty()) {
        if (!invoice.offline_declared)
            throw invalid_input("Korekta techniczna wymaga trybu offline (offlineMode).");
        check_correction(service, session.context, invoice.hash_of_corrected);
    }

    invoice.reference = service.new_reference("EE");
    invoice.session_reference = session.reference;
    invoice.ordinal = int(session.invoices.size()) + 1;
    invoice.received = invoice.stage_since = session.updated = service.now();
    invoice.status = make_status(StatusOf::invoice, 100);
    session.invoices.push_back(invoice.reference);
    const Invoice& kept = service.state.add(std::move(invoice));
    service.store->save(kept);
    service.store->save(session);
    return Answer::json(202, {{"referenceNumber", kept.reference}});
}

Answer list_session_invoices(Service& service, Request& request) {
    const Session& session = service.session_of(request, reference_parameter(request, 0));
    return invoice_page(service, request, session.invoices);
}

Answer list_failed_invoices(Service& service, Request& request) {
    const Session& session = service.session_of(request, reference_parameter(request, 0));
    std::vector<std::string> failed;
    for (const std::string& reference : session.invoices) {
        const Invoice& invoice = service.state.invoices.at(reference);
        if (invoice.stage == InvoiceStage::finished && invoice.status.code != 200)
            failed.push_back(reference);
    }
    return invoice_page(service, request, failed);
}

Answer invoice_status(Service& service, Request& request) {
    Invoice& invoice = invoice_of(service, request);
    return Answer::json(200, invoice_json(service, request, invoice));
}

Answer invoice_upo(Service& service, Request& request) {
    const Invoice& invoice = invoice_of(service, request);
    if (invoice.upo.empty())
        throw BadRequest(ErrorCode::upo_not_found,
                         {"UPO faktury o numerze referencyjnym " + invoice.reference +
                          " nie zostało znalezione."});
    return hashed_xml(invoice.upo);
}

Answer invoice_upo_by_ksef_number(Service& service, Request& request) {
    const Session& session = service.session_of(request, reference_parameter(request, 0));
    const std::string& number = ksef_number_parameter(request, 1);
    const auto found = service.state.invoice_by_ksef_number.find(number);
    if (found == service.state.invoice_by_ksef_number.end() ||
        service.state.invoices.at(found->second).session_reference != session.reference)
        throw BadRequest(ErrorCode::upo_not_found,
                         {"UPO faktury o numerze KSeF " + number + " nie zostało znalezione."});
    return hashed_xml(service.state.invoices.at(found->second).upo);
}

Answer session_upo(Service& service, Request& request) {
    const Session& session = service.session_of(request, reference_parameter(request, 0));
    const std::string& reference = reference_parameter(request, 1);
    if (session.upo_reference.empty() || session.upo_reference != reference)
        throw BadRequest(ErrorCode::upo_not_found,
                         {"UPO o numerze referencyjnym " + reference + " dla sesji " +
                          session.reference + " nie zostało znalezione."});
    return hashed_xml(session.upo);
}

Answer invoice_by_ksef_number(Service& service, Request& request) {
    const std::string& number = ksef_number_parameter(request, 0);
    const auto found = service.state.invoice_by_ksef_number.find(number);
    const std::string nip = service.authentication_of(request).context.nip();
    if (found == service.state.invoice_by_ksef_number.end() ||
        !concerns(*service.state.invoices.at(found->second).summary, nip))
        throw BadRequest(ErrorCode::invoice_not_found,
                         {"Faktura o numerze KSeF " + number + " nie została znaleziona."});
    return hashed_xml(service.state.invoices.at(found->second).xml);
}

}  // namespace tavrix::sandbox
