#include "sandbox/pages/html.h"

#include <algorithm>

#include "sandbox/basics/crypto.h"
#include "sandbox/basics/text.h"
#include "sandbox/basics/xml.h"
#include "sandbox/pages/live.h"
#include "sandbox/pages/polish.h"
#include "sandbox/pages/style.h"
#include "sandbox/pages/validator_words.h"

namespace tavrix::sandbox {
namespace {

constexpr std::size_t most_shown_bytes = 64 * 1024;

constexpr const char* header_html =
    "<header><h1><a href=\"/\">Piaskownica KSeF</a></h1>"
    "<p>Lokalny system do prób. Wystawione tu faktury nie trafiają do Ministerstwa Finansów.</p>"
    "<nav aria-label=\"Strony\"><ul><li><a href=\"/faktury\">Faktury</a></li>"
    "<li><a href=\"/sesje\">Sesje</a></li><li><a href=\"/zadania\">Żądania</a></li>"
    "<li><a href=\"/szukaj\">Szukaj</a></li>"
    "<li><a href=\"/ustawienia\">Tempo i usterki</a></li>"
    "<li><a href=\"/start\">Jak zacząć</a></li></ul></nav>"
    // Without a script this is true; the script says something else.
    "<p id=\"na-zywo\">Ta strona nie odświeża się sama.</p></header>";

std::string trail_html(const std::vector<std::string>& trail) {
    if (trail.empty()) return "";
    std::string html = "<nav class=\"trail\" aria-label=\"Powrót\"><ol>";
    for (const std::string& step : trail) html += "<li>" + step + "</li>";
    return html + "</ol></nav>";
}

const std::string& content_policy() {
    static const std::string policy =
        "default-src 'none'; style-src 'sha256-" + sha256_base64(style) + "'; script-src 'sha256-" +
        sha256_base64(live_script) +
        "'; connect-src 'self'; form-action 'self'; base-uri 'none'; frame-ancestors 'none'";
    return policy;
}

}  // namespace

Answer page(const std::string& title, const std::string& content,
            const std::vector<std::string>& trail) {
    Answer answer = Answer::html(
        "<!DOCTYPE html><html lang=\"pl\"><head><meta charset=\"utf-8\">"
        "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\"><title>" +
        xml_escape(title) + "</title><style>" + style +
        "</style></head><body><a class=\"skip\" href=\"#tresc\">Przejdź do treści</a>" +
        header_html + "<main id=\"tresc\">" + trail_html(trail) + content + "</main><script>" +
        live_script + "</script></body></html>");
    answer.headers = {{"Content-Security-Policy", content_policy()},
                      {"X-Content-Type-Options", "nosniff"},
                      {"Referrer-Policy", "same-origin"}};
    return answer;
}

Answer notice_page(int status, const std::string& title, const std::string& sentence) {
    Answer answer = page(title, section(title, "<p>" + xml_escape(sentence) + "</p>"),
                         {link("/", "Powrót do początku")});
    answer.status = status;
    return answer;
}

Answer download(std::string content, const std::string& file_name) {
    Answer answer = Answer::xml(std::move(content));
    answer.headers = {{"Content-Disposition", "attachment; filename=\"" + file_name + "\""},
                      {"Content-Security-Policy", "default-src 'none'; sandbox"},
                      {"X-Content-Type-Options", "nosniff"}};
    return answer;
}

std::string shortened(std::string_view text, std::size_t most) {
    if (text.size() <= most) return std::string(text);
    while (most > 0 && (text[most] & 0xC0) == 0x80) --most;
    return std::string(text.substr(0, most)) + "…";
}

std::string section(const std::string& title, const std::string& content) {
    return "<section><h2>" + xml_escape(title) + "</h2>" + content + "</section>";
}

std::string live(const char* name, const std::string& content) {
    return std::string("<div id=\"") + name + "\" data-live>" + content + "</div>";
}

std::string link(const std::string& address, const std::string& text) {
    return "<a href=\"" + xml_escape(address) + "\">" + xml_escape(text) + "</a>";
}

std::string address_of(const char* kind, const std::string& reference) {
    return std::string("/") + kind + "/" + percent_encode(reference);
}

std::string badge(const char* css_class, const std::string& text) {
    return std::string("<span class=\"") + css_class + "\">" + xml_escape(text) + "</span>";
}

std::string badge(const Status& status) {
    return badge(status.code == 200  ? "ok"
                 : status.code < 200 ? "wait"
                                     : "bad",
                 std::to_string(status.code) + " " + status.description);
}

std::string detail_html(const std::string& detail, std::size_t most) {
    const ValidatorWords words = in_polish(detail);
    return xml_escape(shortened(words.polish, most)) +
           (words.own.empty() ? ""
                              : "<q lang=\"en\">" + xml_escape(shortened(words.own, most)) +
                                    "</q> (słowa programu sprawdzającego)");
}

std::string fact(const std::string& label, const std::string& value) {
    return fact_html(label, xml_escape(value));
}

std::string fact_html(const std::string& label, const std::string& value) {
    return value.empty() ? "" : "<dt>" + xml_escape(label) + "</dt><dd>" + value + "</dd>";
}

std::string facts(const std::string& rows) {
    return rows.empty() ? "" : "<dl>" + rows + "</dl>";
}

Table::Table(std::string name, std::vector<Column> columns)
    : name_(std::move(name)), columns_(std::move(columns)) {}

// The roles are the elements' own; browsers forget them where the style makes blocks of a table.
void Table::row(const std::vector<std::string>& cells) {
    rows_ += "<tr role=\"row\">";
    for (std::size_t i = 0; i < cells.size(); ++i)
        rows_ += "<td role=\"cell\" data-label=\"" + xml_escape(columns_[i].title) +
                 (columns_[i].numeric ? "\" class=\"n\">" : "\">") +
                 (cells[i].empty() ? "" : "<span>" + cells[i] + "</span>") + "</td>";
    rows_ += "</tr>";
}

std::string Table::html() const {
    std::string html = "<table role=\"table\" aria-label=\"" + xml_escape(name_) +
                       "\"><thead role=\"rowgroup\"><tr role=\"row\">";
    for (const Column& column : columns_)
        html += std::string("<th scope=\"col\" role=\"columnheader\"") +
                (column.numeric ? " class=\"n\">" : ">") + xml_escape(column.title) + "</th>";
    return html + "</tr></thead><tbody role=\"rowgroup\">" + rows_ + "</tbody></table>";
}

Slice slice_of(const Request& request, std::size_t total, std::size_t size) {
    Slice slice;
    slice.count = std::max<std::size_t>((total + size - 1) / size, 1);
    const auto wanted = number_of<std::size_t>(request.parameter("strona").value_or("1"));
    slice.number = std::clamp<std::size_t>(wanted.value_or(1), 1, slice.count);
    slice.to = total - std::min((slice.number - 1) * size, total);
    slice.from = slice.to - std::min(size, slice.to);
    return slice;
}

std::string slice_links(const std::string& address, const Slice& slice) {
    if (slice.count == 1) return "";
    const auto to = [&](std::size_t number, const char* text) {
        return link(address + (address.find('?') == std::string::npos ? "?strona=" : "&strona=") +
                        std::to_string(number),
                    text);
    };
    std::string html = "<nav class=\"parts\" aria-label=\"Strony listy\">";
    if (slice.number > 1) html += to(slice.number - 1, "‹ Nowsze");
    html +=
        "<span>Strona " + count_text(slice.number) + " z " + count_text(slice.count) + "</span>";
    if (slice.number < slice.count) html += to(slice.number + 1, "Starsze ›");
    return html + "</nav>";
}

std::string excerpt(const std::string& text, const std::string& when_cut) {
    return "<pre tabindex=\"0\">" + xml_escape(shortened(text, most_shown_bytes)) + "</pre>" +
           (text.size() > most_shown_bytes ? "<p class=\"note\">" + xml_escape(when_cut) + "</p>"
                                           : "");
}

}  // namespace tavrix::sandbox
