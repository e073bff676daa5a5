#include "sandbox/pages/page.h"

#include "sandbox/basics/text.h"
#include "sandbox/basics/xml.h"
#include "sandbox/pages/invoice_page.h"
#include "sandbox/service/bearer_tokens.h"

namespace tavrix::sandbox {
namespace {

constexpr std::size_t rows_shown = 50;

constexpr const char* style = R"css(
body{font:16px/1.5 system-ui,"DejaVu Sans",sans-serif;color:#1c2733;background:#f4f6f8;margin:0}
header{background:#12324f;color:#fff;padding:14px 24px}header a{color:#fff;text-decoration:none}
header h1{font-size:20px;margin:0}header p{margin:0;color:#b9cde0;font-size:14px}
main{max-width:1320px;margin:0 auto;padding:8px 24px 48px}
section{background:#fff;border:1px solid #dde3e9;border-radius:8px;padding:4px 20px 18px;margin-top:18px}
h2{font-size:18px;margin:14px 0 8px}h3{font-size:15px;margin:18px 0 6px;color:#45586b}
table{border-collapse:collapse;width:100%}th{text-align:left;font-weight:600}
.grid th,.grid td{padding:6px 10px;border-bottom:1px solid #e6ebf0;vertical-align:top;font-size:14px}
.grid thead th{color:#5a6c7d;border-bottom:2px solid #d3dbe3}.narrow{max-width:640px}
.facts{width:auto}.facts th{padding:2px 24px 2px 0;color:#5a6c7d;font-weight:400}.facts td{padding:2px 0}
.n{text-align:right!important;white-space:nowrap}.total{font-weight:700;font-size:16px!important}
code,.mono{font-family:ui-monospace,"DejaVu Sans Mono",monospace;font-size:13px}
.path{overflow-wrap:anywhere}.number{white-space:nowrap}a{color:#0b5cad}.when{white-space:nowrap}
.ok,.wait,.bad{display:inline-block;border-radius:10px;padding:1px 9px;font-size:13px;line-height:1.35}
.ok{background:#dff3e4;color:#176b34}.wait{background:#fdf1d3;color:#7a5700}.bad{background:#fbe0df;color:#9b1c1c}
.parties{display:flex;flex-wrap:wrap;gap:8px 48px}.party p{margin:0}.note,.empty{color:#5a6c7d}
pre{tab-size:4;background:#f4f6f8;border:1px solid #dde3e9;border-radius:6px;padding:12px;overflow:auto;
max-height:480px;font-size:13px;line-height:1.45;white-space:pre-wrap;overflow-wrap:anywhere}
)css";

std::string frame(const std::string& title, const std::string& content) {
    return "<!DOCTYPE html><html lang=\"pl\"><head><meta charset=\"utf-8\">"
           "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\"><title>" +
           xml_escape(title) + "</title><style>" + style +
           "</style></head><body><header><h1><a href=\"/\">Piaskownica KSeF</a></h1>"
           "<p>Lokalny system do prób. Wystawione tu faktury nie trafiają do Ministerstwa "
           "Finansów.</p>"
           "</header><main>" +
           content + "</main></body></html>";
}

Answer page(const std::string& title, const std::string& content) {
    Answer answer = Answer::html(frame(title, content));
    // Even a document that slipped past the escaping could load and run nothing.
    answer.headers.emplace_back(
        "Content-Security-Policy",
        "default-src 'none'; style-src 'unsafe-inline'; frame-ancestors 'none'");
    answer.headers.emplace_back("X-Content-Type-Options", "nosniff");
    return answer;
}

std::string badge(const Status& status) {
    const char* css_class = status.code == 200 ? "ok" : status.code < 200 ? "wait" : "bad";
    return std::string("<span class=\"") + css_class + "\">" + std::to_string(status.code) + " " +
           xml_escape(status.description) + "</span>";
}

std::string time_cell(Instant moment) {
    std::string text = polish_time_text(moment).substr(0, 19);
    text[10] = ' ';
    return "<td class=\"when\">" + text + "</td>";
}

std::string link(const std::string& kind, const std::string& reference, const std::string& text) {
    return "<a href=\"/" + kind + "/" + percent_encode(reference) + "\">" + xml_escape(text) +
           "</a>";
}

std::string session_row(const Session& session) {
    return "<tr><td class=\"mono number\">" + link("sesja", session.reference, session.reference) +
           "</td><td>" + xml_escape(session.context.value) + "</td>" + time_cell(session.created) +
           "<td class=\"n\">" + std::to_string(session.invoices.size()) + "</td><td class=\"n\">" +
           std::to_string(session.successful) + "</td><td class=\"n\">" +
           std::to_string(session.failed) + "</td><td>" + badge(session.status) + "</td></tr>";
}

std::string invoice_row(const Invoice& invoice) {
    std::string number = "(bez numeru)", buyer, amount;
    if (invoice.summary) {
        if (!invoice.summary->invoice_number.empty()) number = invoice.summary->invoice_number;
        buyer = invoice.summary->buyer.name;
        amount = money_text(invoice.summary->gross_amount) + " " + invoice.summary->currency;
    }
    return "<tr><td>" + link("faktura", invoice.reference, number) + "</td><td>" +
           xml_escape(buyer) + "</td><td class=\"n\">" + xml_escape(amount) +
           "</td><td class=\"mono number\">" +
           xml_escape(invoice.ksef_number.empty() ? "–" : invoice.ksef_number) + "</td>" +
           time_cell(invoice.received) + "<td>" + badge(invoice.status) + "</td></tr>";
}

std::string request_row(const LoggedRequest& entry) {
    const char* css_class = entry.status < 300 ? "ok" : "bad";
    char duration[32];
    std::snprintf(duration, sizeof duration, "%.1f", entry.duration_ms);
    for (char& c : duration)
        if (c == '.') c = ',';
    return "<tr>" + time_cell(entry.time) + "<td class=\"mono\">" + xml_escape(entry.method) +
           "</td><td class=\"mono path\">" + xml_escape(mask_tokens(entry.target)) +
           "</td><td><span class=\"" + css_class + "\">" + std::to_string(entry.status) +
           "</span></td><td class=\"n\">" + duration + "</td></tr>";
}

/// A table of the newest entries, or a line saying there are none.
template <typename List, typename Render>
std::string newest(const std::string& title, const std::string& head, const std::string& nothing,
                   const List& list, Render render) {
    std::string html = "<section><h2>" + title + "</h2>";
    if (list.empty()) return html + "<p class=\"empty\">" + nothing + "</p></section>";
    html += "<table class=\"grid\"><thead><tr>" + head + "</tr></thead><tbody>";
    std::size_t shown = 0;
    for (auto entry = list.rbegin(); entry != list.rend() && shown < rows_shown; ++entry, ++shown)
        html += render(*entry);
    html += "</tbody></table>";
    if (list.size() > rows_shown)
        html += "<p class=\"note\">Pokazano " + std::to_string(rows_shown) + " najnowszych z " +
                std::to_string(list.size()) + ".</p>";
    return html + "</section>";
}

constexpr const char* invoice_head =
    "<th>Faktura</th><th>Nabywca</th><th class=\"n\">Brutto</th><th>Numer "
    "KSeF</th><th>Przyjęta</th><th>Status</th>";

Answer overview(const State& state, const RequestLog& log) {
    std::string html = newest(
        "Faktury", invoice_head, "Nie wpłynęła jeszcze żadna faktura.", state.invoice_order,
        [&](const std::string& reference) { return invoice_row(state.invoices.at(reference)); });
    html += newest(
        "Sesje",
        "<th>Numer referencyjny</th><th>Kontekst</th><th>Otwarta</th><th class=\"n\">Faktur</th>"
        "<th class=\"n\">Przyjętych</th><th class=\"n\">Odrzuconych</th><th>Status</th>",
        "Nie otwarto jeszcze żadnej sesji.", state.session_order,
        [&](const std::string& reference) { return session_row(state.sessions.at(reference)); });
    html += newest(
        "Ostatnie żądania",
        "<th>Czas</th><th>Metoda</th><th>Ścieżka</th><th>Odpowiedź</th><th class=\"n\">ms</th>",
        "Nie było jeszcze żądań.", log.entries(), request_row);
    return page("Piaskownica KSeF", html);
}

std::string document(const std::string& title, const std::string& text) {
    return text.empty()
               ? ""
               : "<section><h2>" + title + "</h2><pre>" + xml_escape(text) + "</pre></section>";
}

Answer session_page(const State& state, const Session& session) {
    std::string html = "<section><h2>Sesja " + xml_escape(session.reference) + "</h2><p>" +
                       badge(session.status) + "</p><table class=\"facts\">" +
                       fact("Kontekst", session.context.value) +
                       fact("Formularz", session.form_code.system_code) +
                       fact("Otwarta", polish_time_text(session.created)) +
                       fact("Zamknięta", session.closed ? polish_time_text(*session.closed) : "") +
                       "</table></section>";
    html += newest(
        "Faktury sesji", invoice_head, "Sesja nie zawiera faktur.", session.invoices,
        [&](const std::string& reference) { return invoice_row(state.invoices.at(reference)); });
    return page("Sesja " + session.reference, html + document("UPO sesji", session.upo));
}

Answer invoice_details(const Invoice& invoice) {
    std::string html = "<section>" + render_invoice(invoice.xml) + "</section>";
    html += "<section><h2>W systemie</h2><p>" + badge(invoice.status) + "</p>";
    for (const std::string& detail : invoice.status.details)
        html += "<p class=\"note\">" + xml_escape(detail) + "</p>";
    html += "<table class=\"facts\">" + fact("Numer KSeF", invoice.ksef_number) +
            fact("Numer referencyjny", invoice.reference) +
            fact("Przyjęta", polish_time_text(invoice.received)) +
            (invoice.ksef_number.empty()
                 ? ""
                 : fact("Numer KSeF nadano", polish_time_text(invoice.acquired)) +
                       fact("Tryb", invoice.offline ? "offline" : "online")) +
            fact("Skrót SHA-256", invoice.invoice_hash) +
            fact("Korekta techniczna faktury o skrócie", invoice.hash_of_corrected) +
            "<tr><th>Sesja</th><td>" +
            link("sesja", invoice.session_reference, invoice.session_reference) +
            "</td></tr></table></section>";
    html += document("UPO", invoice.upo) + document("Dokument XML", invoice.xml);
    return page("Faktura " + invoice.reference, html);
}

}  // namespace

Answer show_page(const State& state, const RequestLog& log, const Request& request) {
    std::vector<std::string> parameters;
    if (request.method == "GET" || request.method == "HEAD") {
        if (request.path == "/") return overview(state, log);
        if (match_path("/sesja/{}", request.path, parameters))
            if (const Session* session = look_up(state.sessions, parameters[0]))
                return session_page(state, *session);
        if (match_path("/faktura/{}", request.path, parameters))
            if (const Invoice* invoice = look_up(state.invoices, parameters[0]))
                return invoice_details(*invoice);
    }
    Answer answer =
        page("Nie ma takiej strony",
             "<section><h2>Nie ma takiej strony</h2><p><a href=\"/\">Powrót</a></p></section>");
    answer.status = 404;
    return answer;
}

}  // namespace tavrix::sandbox
