#include "sandbox/pages/page.h"

#include <cstdio>
#include <functional>
#include <span>

#include "sandbox/basics/xml.h"
#include "sandbox/pages/html.h"
#include "sandbox/pages/invoice_page.h"
#include "sandbox/pages/polish.h"
#include "sandbox/pages/settings_page.h"
#include "sandbox/store/statuses.h"

namespace tavrix::sandbox {
namespace {

// Of a list of its own, and of each list on the first page.
constexpr std::size_t page_size = 50, newest_shown = 15;
constexpr std::size_t longest_target = 300, longest_reason = 300, longest_number = 40,
                      longest_buyer = 120;

std::string size_text(std::int64_t bytes) {
    return count_text(std::uint64_t(bytes)) + " B";
}

std::string span(const char* css_class, const std::string& text) {
    return std::string("<span class=\"") + css_class + "\">" + xml_escape(text) + "</span>";
}

/// What an invoice would be told now. Looking at a page counts as no question.
Status status_of(const Invoice& invoice) {
    switch (invoice.stage) {
        case InvoiceStage::accepted:
            return make_status(StatusOf::invoice, 100);
        case InvoiceStage::processing:
            return make_status(StatusOf::invoice, 150);
        case InvoiceStage::finished:
            break;
    }
    return invoice.status;
}

const Table::Column invoice_columns[] = {{"Faktura"},    {"Nabywca"},  {"Brutto", true},
                                         {"Numer KSeF"}, {"Przyjęta"}, {"Status"}};
const Table::Column session_columns[] = {
    {"Sesja"},        {"Kontekst"},         {"Otwarta"},
    {"Faktur", true}, {"Przyjętych", true}, {"Odrzuconych", true},
    {"Status"}};
const Table::Column request_columns[] = {
    {"Czas"}, {"Metoda"}, {"Ścieżka"}, {"Odpowiedź"}, {"ms", true}};

std::vector<std::string> invoice_cells(const Invoice& invoice) {
    const InvoiceHeading heading = heading_of(invoice);
    const Status status = status_of(invoice);
    std::string outcome = badge(status);
    if (status.code >= 300 && !status.details.empty())
        outcome += "<div class=\"reason\">" + detail_html(status.details.front(), longest_reason) +
                   "</div>";
    return {
        link(address_of("faktura", invoice.reference), shortened(heading.number, longest_number)) +
            (heading.attachment ? " " + badge("wait", "załącznik") : ""),
        xml_escape(shortened(heading.buyer, longest_buyer)),
        xml_escape(shortened(heading.amount, longest_number)),
        invoice.ksef_number.empty() ? "" : span("mono keep", invoice.ksef_number),
        span("when", moment_text(invoice.received)),
        outcome};
}

std::vector<std::string> session_cells(const Session& session) {
    return {"<span class=\"mono keep\">" +
                link(address_of("sesja", session.reference), session.reference) + "</span>",
            span("keep", session.context.value),
            span("when", moment_text(session.created)),
            count_text(session.invoices.size()),
            count_text(std::uint64_t(session.successful)),
            count_text(std::uint64_t(session.failed)),
            badge(session.status)};
}

std::vector<std::string> request_cells(const LoggedRequest& entry) {
    char duration[32];
    std::snprintf(duration, sizeof duration, "%.1f", entry.duration_ms);
    for (char& c : duration)
        if (c == '.') c = ',';
    std::string outcome = badge(entry.status < 300 ? "ok" : "bad", std::to_string(entry.status));
    for (const std::string& fault : entry.faults) outcome += " " + badge("wait", fault);
    return {span("when", moment_text(entry.time)), span("mono", entry.method),
            span("mono", shortened(mask_tokens(entry.target), longest_target)), outcome, duration};
}

/// A list and how the entry at an index is shown.
struct List {
    std::string title;
    /// Of its own page.
    std::string address;
    std::string nothing;
    std::span<const Table::Column> columns;
    std::size_t total;
    std::function<std::vector<std::string>(std::size_t)> cells;
};

List invoice_list(const State& state, const std::vector<std::string>& references) {
    return {"Faktury",
            "/faktury",
            "Nie ma tu jeszcze żadnej faktury.",
            invoice_columns,
            references.size(),
            [&](std::size_t index) { return invoice_cells(state.invoices.at(references[index])); }};
}

List session_list(const State& state) {
    return {"Sesje",
            "/sesje",
            "Nie otwarto jeszcze żadnej sesji.",
            session_columns,
            state.session_order.size(),
            [&](std::size_t index) {
                return session_cells(state.sessions.at(state.session_order[index]));
            }};
}

List request_list(const RequestLog& log) {
    return {"Żądania",
            "/zadania",
            "Nie było jeszcze żądań.",
            request_columns,
            log.entries().size(),
            [&](std::size_t index) { return request_cells(log.entries()[index]); }};
}

std::string rows_of(const List& list, const Slice& slice) {
    if (list.total == 0) return "<p class=\"empty\">" + list.nothing + "</p>";
    Table table(list.title, {list.columns.begin(), list.columns.end()});
    for (std::size_t index = slice.to; index-- > slice.from;) table.row(list.cells(index));
    return table.html();
}

/// The whole list, a part at a time.
std::string list_section(const List& list, const Request& request) {
    const Slice slice = slice_of(request, list.total, page_size);
    return section(list.title + " (" + count_text(list.total) + ")",
                   rows_of(list, slice) + slice_links(list.address, slice));
}

/// Its newest entries, and the way to the others.
std::string newest_section(const List& list) {
    const Slice slice{1, 1, list.total - std::min(list.total, newest_shown), list.total};
    return section(
        list.title,
        rows_of(list, slice) +
            (slice.from == 0
                 ? ""
                 : "<p>" + link(list.address, "Wszystkie: " + count_text(list.total)) + "</p>"));
}

Answer list_page(const List& list, const Request& request) {
    return page(list.title, list_section(list, request), {link("/", "Początek"), list.title});
}

Answer overview(const PageRoom& room) {
    const State& state = room.service.state;
    return page("Piaskownica KSeF", settings_notice(room.service) +
                                        newest_section(invoice_list(state, state.invoice_order)) +
                                        newest_section(session_list(state)) +
                                        newest_section(request_list(room.log)));
}

/// A document with a link to the file; nothing when there is none.
std::string document_section(const std::string& title, const std::string& text,
                             const std::string& address) {
    return text.empty()
               ? ""
               : section(title, "<p>" + link(address, "Pobierz plik") + "</p>" + excerpt(text));
}

std::string status_html(const Status& status) {
    std::string html = "<p>" + badge(status) + "</p>";
    for (const std::string& detail : status.details)
        html += "<p class=\"reason\">" + detail_html(detail) + "</p>";
    return html;
}

std::string package_facts(const Package& package) {
    std::string rows = fact("Paczka", package.compression + ", " + size_text(package.size));
    for (std::size_t i = 0; i < package.parts.size(); ++i)
        rows += fact("Część " + std::to_string(i + 1), size_text(package.parts[i].size));
    return rows;
}

Answer session_page(const State& state, const Session& session, const Request& request) {
    const std::string address = address_of("sesja", session.reference);
    List invoices = invoice_list(state, session.invoices);
    invoices.address = address;
    return page(
        "Sesja " + session.reference,
        section("Sesja " + session.reference,
                status_html(session.status) +
                    facts(fact("Rodzaj",
                               session.kind == SessionKind::online ? "interaktywna" : "wsadowa") +
                          fact("Kontekst", session.context.value) +
                          fact("Formularz", session.form_code.system_code) +
                          fact("Otwarta", moment_text(session.created)) +
                          fact("Zamknięta", session.closed ? moment_text(*session.closed) : "") +
                          (session.package ? package_facts(*session.package) : ""))) +
            list_section(invoices, request) +
            document_section("UPO sesji", session.upo, address + "/upo"),
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

Answer invoice_page(const Invoice& invoice) {
    const std::string address = address_of("faktura", invoice.reference);
    return page("Faktura " + invoice.reference,
                invoice_text_section(invoice) + invoice_status_section(invoice) +
                    document_section("UPO", invoice.upo, address + "/upo") +
                    document_section("Dokument XML", invoice.xml, address + "/xml"),
                {link("/", "Początek"), link("/faktury", "Faktury"),
                 xml_escape(heading_of(invoice).number)});
}

/// A page about one session or invoice, or a file of it; nothing for an address that is neither's.
std::optional<Answer> page_of_record(const State& state, const Request& request) {
    std::vector<std::string> parameters;
    const auto matches = [&](const char* pattern) {
        return match_path(pattern, request.path, parameters);
    };
    const Session* session = matches("/sesja/{}") || matches("/sesja/{}/upo")
                                 ? look_up(state.sessions, parameters[0])
                                 : nullptr;
    if (session != nullptr && matches("/sesja/{}")) return session_page(state, *session, request);
    if (session != nullptr && !session->upo.empty())
        return download(session->upo, "UPO-" + session->reference + ".xml");

    const Invoice* invoice =
        matches("/faktura/{}") || matches("/faktura/{}/xml") || matches("/faktura/{}/upo")
            ? look_up(state.invoices, parameters[0])
            : nullptr;
    if (invoice == nullptr) return std::nullopt;
    if (matches("/faktura/{}")) return invoice_page(*invoice);
    const bool upo = matches("/faktura/{}/upo");
    const std::string& content = upo ? invoice->upo : invoice->xml;
    if (content.empty()) return std::nullopt;
    return download(content, (upo ? "UPO-" : "") + invoice->reference + ".xml");
}

}  // namespace

Answer show_page(PageRoom& room, const Request& request) {
    const State& state = room.service.state;
    if (request.method == "POST") return submit_settings(room, request);
    if (request.method == "GET" || request.method == "HEAD") {
        if (request.path == "/") return overview(room);
        if (request.path == "/ustawienia") return settings_page(room);
        if (request.path == "/faktury")
            return list_page(invoice_list(state, state.invoice_order), request);
        if (request.path == "/sesje") return list_page(session_list(state), request);
        if (request.path == "/zadania") return list_page(request_list(room.log), request);
        if (auto answer = page_of_record(state, request)) return *answer;
    }
    return notice_page(404, "Nie ma takiej strony", "Pod tym adresem nic tu nie ma.");
}

}  // namespace tavrix::sandbox
