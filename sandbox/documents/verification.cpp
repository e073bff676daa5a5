#include "sandbox/documents/verification.h"

#include "sandbox/basics/crypto.h"
#include "sandbox/basics/ksef_number.h"
#include "sandbox/documents/fa3.h"
#include "sandbox/store/statuses.h"

namespace tavrix::sandbox {
namespace {

// Source: "Weryfikacja faktury", sizes of files.
constexpr std::size_t largest_invoice = 1'000'000;

// Source: the schemas of invoices and of confirmations.
constexpr std::string_view earliest_issue_date = "2006-01-01";

Status rejected(int code, std::vector<std::string> details = {}) {
    return make_status(StatusOf::invoice, code, std::move(details));
}

/// Empty status: nothing wrong so far.
using Check = std::optional<Status>;

Check check_file(const Invoice& invoice) {
    if (invoice.invoice_size > largest_invoice_file)
        return rejected(430, {"Przekroczono dozwolony rozmiar faktury."});
    if (std::int64_t(invoice.xml.size()) != invoice.invoice_size)
        return rejected(430, {"Rozmiar faktury jest niezgodny z zadeklarowanym."});
    if (sha256_base64(invoice.xml) != invoice.invoice_hash)
        return rejected(430, {"Skrót faktury jest niezgodny z zadeklarowanym."});
    if (invoice.xml.starts_with("\xEF\xBB\xBF"))
        return rejected(430, {"Plik faktury zawiera znacznik kolejności bajtów (BOM)."});
    if (!is_utf8(invoice.xml)) return rejected(450, {"Plik faktury nie jest zakodowany w UTF-8."});
    return std::nullopt;
}

Check check_form(const Element& root, const Session& session) {
    if (root.name() != "Faktura")
        return rejected(450, {"Element główny dokumentu nie jest elementem Faktura."});
    const std::string code = form_system_code(root);
    if (code != session.form_code.system_code)
        return rejected(450, {"Kod formularza \"" + code + "\" jest niezgodny z zadeklarowanym \"" +
                              session.form_code.system_code + "\"."});
    return std::nullopt;
}

Check check_meaning(const Criteria& criteria, const Session& session, Invoice& invoice,
                    const Element& root) {
    SummaryResult result = summarize_invoice(root);
    invoice.summary = std::move(result.summary);
    const InvoiceSummary& summary = *invoice.summary;
    if (!result.problems.empty()) return rejected(450, std::move(result.problems));
    if (!is_nip(summary.seller.identifier))
        return rejected(450, {"Nieprawidłowy NIP sprzedawcy: " + summary.seller.identifier + "."});
    if (!parse_instant(summary.issue_date) || summary.issue_date.size() != 10 ||
        summary.issue_date < earliest_issue_date)
        return rejected(450, {"Nieprawidłowa data wystawienia: " + summary.issue_date + "."});
    if (!summary.has_attachment && invoice.xml.size() > largest_invoice)
        return rejected(430, {"Przekroczono dozwolony rozmiar faktury."});
    if (summary.seller.identifier != session.context.nip()) return rejected(410);
    const std::string day = polish_date_text(invoice.received);
    if (summary.issue_date > day)
        return rejected(450,
                        {"Data wystawienia (P_1) jest późniejsza niż data przyjęcia faktury."});
    if (summary.has_attachment && criteria.refuse_attachments) return rejected(415);
    // An invoice of an earlier day counts as offline even when it was not declared so.
    invoice.offline = invoice.offline_declared || summary.issue_date < day;
    return std::nullopt;
}

Check check_uniqueness(const State& state, const Invoice& invoice) {
    const auto* original = look_up(state.invoice_by_identity, identity_of(*invoice.summary));
    if (original == nullptr) return std::nullopt;
    const Invoice& first = state.invoices.at(*original);
    Status status = rejected(
        440, {"Duplikat faktury. Faktura o numerze KSeF: " + first.ksef_number +
              " została już prawidłowo przesłana do systemu w sesji: " + first.session_reference});
    status.extensions = {{"originalSessionReferenceNumber", first.session_reference},
                         {"originalKsefNumber", first.ksef_number}};
    return status;
}

}  // namespace

Status verify_invoice(const Criteria& criteria, const Session& session, Invoice& invoice) {
    if (session.kind == SessionKind::online) {
        auto plain = aes_256_cbc_decrypt(base64_decode(session.symmetric_key).value_or(""),
                                         base64_decode(session.initialization_vector).value_or(""),
                                         invoice.encrypted);
        invoice.encrypted.clear();
        if (!plain) return rejected(435);
        invoice.xml = std::move(*plain);
    }
    if (auto wrong = check_file(invoice)) return *wrong;

    const ParsedXml parsed = parse_xml(invoice.xml);
    if (!parsed.document) return rejected(450, {parsed.error});
    if (const std::string encoding = declared_encoding(parsed.document);
        !encoding.empty() && encoding != "UTF-8")
        return rejected(430, {"Niedozwolone kodowanie pliku faktury: " + encoding + "."});

    const Element root = Element::root_of(parsed.document);
    if (auto wrong = check_form(root, session)) return *wrong;
    if (criteria.schemas != nullptr) {
        auto errors = criteria.schemas->validate(parsed.document, session.form_code);
        if (!errors.empty()) return rejected(450, std::move(errors));
    }
    if (auto wrong = check_meaning(criteria, session, invoice, root)) return *wrong;
    if (auto wrong = check_uniqueness(criteria.state, invoice)) return *wrong;
    return make_status(StatusOf::invoice, 200);
}

}  // namespace tavrix::sandbox
