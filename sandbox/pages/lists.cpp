#include "sandbox/pages/lists.h"

#include <algorithm>
#include <cstdio>

#include "sandbox/basics/xml.h"
#include "sandbox/pages/invoice_page.h"
#include "sandbox/pages/polish.h"
#include "sandbox/service/bearer_tokens.h"

namespace tavrix::sandbox {
namespace {

// Of a list of its own, and of each list on the first page.
constexpr std::size_t page_size = 50, newest_shown = 15;
constexpr std::size_t longest_target = 300, longest_reason = 300, longest_number = 40,
                      longest_buyer = 120;

std::string span(const char* css_class, const std::string& text) {
    return std::string("<span class=\"") + css_class + "\">" + xml_escape(text) + "</span>";
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
    std::string outcome = badge(outcome_of(entry), std::to_string(entry.status));
    for (const std::string& fault : entry.faults) outcome += " " + badge("wait", fault);
    return {span("when", moment_text(entry.time)), span("mono", entry.method),
            "<span class=\"mono\">" +
                link(address_of("zadanie", std::to_string(entry.number)),
                     shortened(mask_tokens(entry.target), longest_target)) +
                "</span>",
            outcome, milliseconds_text(entry.duration_ms)};
}

std::string rows_of(const List& list, const Slice& slice) {
    if (list.total == 0) return "<p class=\"empty\">" + list.nothing + "</p>";
    Table table(list.title, {list.columns.begin(), list.columns.end()});
    for (std::size_t index = slice.to; index-- > slice.from;) table.row(list.cells(index));
    return table.html();
}

}  // namespace

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

List narrowed(List list, std::vector<std::size_t> indexes) {
    list.total = indexes.size();
    list.nothing = "Nic tu nie pasuje.";
    list.cells = [cells = std::move(list.cells), indexes = std::move(indexes)](std::size_t index) {
        return cells(indexes[index]);
    };
    return list;
}

std::string list_section(const List& list, const Request& request) {
    const Slice slice = slice_of(request, list.total, page_size);
    return section(list.title + " (" + count_text(list.total) + ")",
                   rows_of(list, slice) + slice_links(list.address, slice));
}

std::string newest_section(const List& list) {
    const Slice slice{1, 1, list.total - std::min(list.total, newest_shown), list.total};
    return section(
        list.title,
        rows_of(list, slice) +
            (slice.from == 0
                 ? ""
                 : "<p>" + link(list.address, "Wszystkie: " + count_text(list.total)) + "</p>"));
}

Answer list_page(const List& list, const Search& search, const Request& request, bool complete) {
    List shown = list;
    shown.address += search.query();
    return page(list.title,
                search_form(list.address, search) +
                    live("lista", incomplete_note(complete) + list_section(shown, request)),
                {link("/", "Początek"), list.title});
}

std::string search_form(const std::string& address, const Search& search) {
    constexpr std::pair<const char*, const char*> outcomes[] = {
        {"", "wszystkie"}, {"ok", "przyjęte"}, {"wait", "w toku"}, {"bad", "odrzucone"}};
    std::string options;
    for (const auto& [value, name] : outcomes)
        options += std::string("<option value=\"") + value +
                   (search.outcome() == value ? "\" selected>" : "\">") + name + "</option>";
    return "<form class=\"search\" role=\"search\" method=\"get\" action=\"" + address +
           "\"><label>Szukaj<input type=\"search\" name=\"q\" maxlength=\"200\" value=\"" +
           xml_escape(search.text()) +
           "\" placeholder=\"numer, nabywca, NIP, numer KSeF, status\"></label>"
           "<label>Wynik<select name=\"stan\">" +
           options + "</select></label><button type=\"submit\">Szukaj</button>" +
           (search.narrows() ? "<p>" + link(address, "Pokaż wszystko") + "</p>" : "") + "</form>";
}

std::string incomplete_note(bool complete) {
    return complete ? ""
                    : "<p class=\"note\">Odrzuconych dokumentów jest bardzo dużo: w najstarszych "
                      "sprawdzono tylko status i numery referencyjne.</p>";
}

}  // namespace tavrix::sandbox
