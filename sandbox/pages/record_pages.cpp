#include "sandbox/pages/record_pages.h"

#include "sandbox/basics/text.h"
#include "sandbox/basics/xml.h"
#include "sandbox/pages/html.h"
#include "sandbox/pages/invoice_page.h"
#include "sandbox/pages/lists.h"
#include "sandbox/pages/polish.h"
#include "sandbox/pages/request_page.h"

namespace tavrix::sandbox {
namespace {

// On the page of what they made.
constexpr std::size_t most_requests = 15;
// Setting it out anew takes several times its memory.
constexpr std::size_t largest_set_out = 300'000;

/// A document to read and to save, its own facts above it; nothing when there is none.
std::string document_section(const std::string& title, const std::string& text,
                             const std::string& address, const std::string& above = "") {
    if (text.empty()) return "";
    return section(title, above + "<p>" + link(address, "Pobierz plik") + " · " +
                              size_text(std::int64_t(text.size())) + "</p>" +
                              excerpt(text.size() > largest_set_out ? text : set_out_xml(text),
                                      "To tylko początek; całość jest w pliku."));
}

std::string status_html(const Status& status) {
    std::string html = "<p>" + badge(status) + "</p>";
    for (const std::string& detail : status.details)
        html += "<p class=\"reason\">" + detail_html(detail) + "</p>";
    return html;
}

/// The first of the requests is the one that made it, so it stays, however often it was asked
/// about.
std::string requests_section(const RequestLog& log, std::vector<std::size_t> indexes,
                             const std::string& reference) {
    const std::size_t total = indexes.size();
    if (total > most_requests)
        indexes.erase(indexes.begin() + 1, indexes.end() - std::ptrdiff_t(most_requests - 1));
    List list = narrowed(request_list(log), std::move(indexes));
    list.nothing =
        "Żadne z pamiętanych żądań go nie dotyczy. Pamiętane są ostatnie, do "
        "zamknięcia piaskownicy.";
    return newest_section(list) +
           (total > most_requests
                ? "<p class=\"note\">Pierwsze i najnowsze z " + count_text(total) + ". " +
                      link("/zadania?q=" + percent_encode(reference),
                           "Wszystkie żądania z tym numerem") +
                      "</p>"
                : "");
}

struct UpoRow {
    const char* element;
    const char* label;
};
// Source: the published schema upo-v4-3.xsd.
constexpr UpoRow upo_rows[] = {
    {"NazwaPodmiotuPrzyjmujacego", "Podmiot przyjmujący"},
    {"KodFormularza", "Formularz"},
    {"CalkowitaLiczbaDokumentow", "Dokumentów"},
    {"NumerKSeFDokumentu", "Numer KSeF"},
    {"NumerFaktury", "Numer faktury"},
    {"NipSprzedawcy", "NIP sprzedawcy"},
    {"DataPrzeslaniaDokumentu", "Data przesłania"},
    {"DataNadaniaNumeruKSeF", "Data nadania numeru"},
    {"SkrotDokumentu", "Skrót dokumentu"},
    {"TrybWysylki", "Tryb wysyłki"},
};

/// What a confirmation says, for readers; of many documents only how many there are.
std::string upo_facts(const std::string& upo) {
    const ParsedXml parsed = parse_xml(upo);
    const Element root = Element::root_of(parsed.document);
    const auto documents = root.children("Dokument");
    std::string rows;
    for (const auto& [element, label] : upo_rows)
        for (const Element& place : {root, root.child("OpisPotwierdzenia"),
                                     documents.size() == 1 ? documents.front() : Element()})
            rows += fact(label, place.text(element));
    return facts(rows);
}

std::string package_facts(const Package& package) {
    std::string rows = fact("Paczka", package.compression + ", " + size_text(package.size));
    for (std::size_t i = 0; i < package.parts.size(); ++i)
        rows += fact("Część " + std::to_string(i + 1), size_text(package.parts[i].size));
    return rows;
}

std::string session_facts(const Session& session) {
    const std::string& signing_in = session.authentication_reference;
    return facts(fact("Rodzaj", session.kind == SessionKind::online ? "interaktywna" : "wsadowa") +
                 fact("Kontekst", session.context.value) +
                 fact("Formularz", session.form_code.system_code) +
                 fact("Otwarta", moment_text(session.created)) +
                 fact("Zamknięta", session.closed ? moment_text(*session.closed) : "") +
                 fact_html("Uwierzytelnienie",
                           signing_in.empty()
                               ? ""
                               : link("/zadania?q=" + percent_encode(signing_in), signing_in)) +
                 (session.package ? package_facts(*session.package) : ""));
}

Answer session_page(const PageRoom& room, const Session& session, const Request& request) {
    const std::string address = address_of("sesja", session.reference);
    List invoices = invoice_list(room.service.state, session.invoices);
    invoices.address = address;
    return page("Sesja " + session.reference,
                live("stan", section("Sesja " + session.reference,
                                     status_html(session.status) + session_facts(session))) +
                    live("faktury", list_section(invoices, request)) +
                    live("zadania",
                         requests_section(room.log, requests_naming(room.log, {session.reference}),
                                          session.reference)) +
                    live("upo", document_section("UPO sesji", session.upo, address + "/upo",
                                                 upo_facts(session.upo))),
                {link("/", "Początek"), link("/sesje", "Sesje"), xml_escape(session.reference)});
}

std::string invoice_status_section(const Invoice& invoice) {
    const bool accepted = !invoice.ksef_number.empty();
    const std::string address = address_of("faktura", invoice.reference);
    std::string files = invoice.xml.empty() ? "" : link(address + "/xml", "Dokument XML");
    if (!invoice.upo.empty()) files += " · " + link(address + "/upo", "UPO");
    return section(
        "W systemie",
        status_html(status_of(invoice)) +
            facts(fact("Numer KSeF", invoice.ksef_number) + fact_html("Pliki", files) +
                  fact("Plik w paczce", invoice.file_name) +
                  fact("Numer referencyjny", invoice.reference) +
                  fact_html("Sesja", link(address_of("sesja", invoice.session_reference),
                                          invoice.session_reference)) +
                  fact("Przyjęta", moment_text(invoice.received)) +
                  (accepted ? fact("Numer KSeF nadano", moment_text(invoice.acquired)) +
                                  fact("Tryb", invoice.offline ? "offline" : "online")
                            : "") +
                  fact("Skrót SHA-256", invoice.invoice_hash) +
                  fact("Korekta techniczna faktury o skrócie", invoice.hash_of_corrected)));
}

std::string invoice_text_section(const Invoice& invoice) {
    if (!invoice.xml.empty()) return "<section>" + render_invoice(invoice.xml) + "</section>";
    const bool waiting = invoice.stage != InvoiceStage::finished;
    return section("Faktura",
                   std::string("<p class=\"note\">") +
                       (waiting ? "Faktura jest jeszcze przetwarzana; jej treść będzie tu, gdy "
                                  "system ją odszyfruje."
                                : "Nie udało się odszyfrować dokumentu.") +
                       "</p>");
}

Answer invoice_page(const PageRoom& room, const Invoice& invoice) {
    const std::string address = address_of("faktura", invoice.reference);
    return page(
        "Faktura " + invoice.reference,
        live("tresc-faktury", invoice_text_section(invoice)) +
            live("stan", invoice_status_section(invoice)) +
            live("zadania",
                 requests_section(
                     room.log, requests_naming(room.log, {invoice.reference, invoice.ksef_number}),
                     invoice.reference)) +
            live("upo",
                 document_section("UPO", invoice.upo, address + "/upo", upo_facts(invoice.upo))) +
            live("xml", document_section("Dokument XML", invoice.xml, address + "/xml")),
        {link("/", "Początek"), link("/faktury", "Faktury"),
         xml_escape(heading_of(invoice).number)});
}

}  // namespace

std::optional<Answer> page_of_record(const PageRoom& room, const Request& request) {
    const State& state = room.service.state;
    std::vector<std::string> parameters;
    const auto matches = [&](const char* pattern) {
        return match_path(pattern, request.path, parameters);
    };
    if (matches("/zadanie/{}")) {
        const LoggedRequest* entry =
            room.log.find(number_of<std::uint64_t>(parameters[0]).value_or(0));
        return entry == nullptr ? std::nullopt : std::optional(request_page(state, *entry));
    }
    const Session* session = matches("/sesja/{}") || matches("/sesja/{}/upo")
                                 ? look_up(state.sessions, parameters[0])
                                 : nullptr;
    if (session != nullptr && matches("/sesja/{}")) return session_page(room, *session, request);
    if (session != nullptr && !session->upo.empty())
        return download(session->upo, "UPO-" + session->reference + ".xml");

    const Invoice* invoice =
        matches("/faktura/{}") || matches("/faktura/{}/xml") || matches("/faktura/{}/upo")
            ? look_up(state.invoices, parameters[0])
            : nullptr;
    if (invoice == nullptr) return std::nullopt;
    if (matches("/faktura/{}")) return invoice_page(room, *invoice);
    const bool upo = matches("/faktura/{}/upo");
    const std::string& content = upo ? invoice->upo : invoice->xml;
    if (content.empty()) return std::nullopt;
    return download(content, (upo ? "UPO-" : "") + invoice->reference + ".xml");
}

}  // namespace tavrix::sandbox
