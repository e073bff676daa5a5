#include "sandbox/pages/request_page.h"

#include "sandbox/basics/text.h"
#include "sandbox/basics/xml.h"
#include "sandbox/pages/html.h"
#include "sandbox/pages/polish.h"
#include "sandbox/pages/search.h"
#include "sandbox/service/bearer_tokens.h"

namespace tavrix::sandbox {
namespace {

constexpr std::size_t longest_title = 80, longest_header = 2000, most_links = 20;

/// Answers hand out tokens under this name, those of KSeF too, which look like nothing special.
void mask_token_members(Json& value) {
    for (auto& [name, member] : value.items())
        if (name == "token" && member.is_string())
            member = "{token}";
        else if (member.is_structured())
            mask_token_members(member);
}

/// A body as people read it: JSON and XML set out in lines.
std::string readable(const std::string& body) {
    if (body.starts_with('<')) return mask_tokens(set_out_xml(body));
    std::optional<Json> json = read_json(body);
    if (!json || !json->is_structured()) return mask_tokens(body);
    mask_token_members(*json);
    return mask_tokens(dump(*json, 2));
}

std::string body_section(const std::string& title, const std::string& body,
                         const std::string& nothing) {
    return section(title, body.empty() ? "<p class=\"empty\">" + nothing + "</p>"
                                       : excerpt(readable(body), "To tylko początek."));
}

std::string headers_section(const LoggedRequest& entry) {
    std::string rows;
    for (const auto& [name, value] : entry.headers)
        rows += lower(name) == "authorization"
                    ? fact(name, value + " (rodzaj tokena; sam token nie jest pamiętany)")
                    : fact(name, shortened(mask_tokens(value), longest_header));
    return section("Nagłówki", facts(rows));
}

/// Links to the sessions and invoices that the path names, or the answer to a command.
std::string records_named(const State& state, const LoggedRequest& entry) {
    std::string html;
    std::size_t count = 0;
    const auto name = [&](const std::string& text) {
        const Invoice* invoice = look_up(state.invoices, text);
        if (invoice == nullptr) invoice = state.accepted(text);
        const Session* session = look_up(state.sessions, text);
        if ((invoice == nullptr && session == nullptr) || ++count > most_links) return;
        html += (html.empty() ? "" : "<br>") +
                (session != nullptr
                     ? link(address_of("sesja", session->reference), "Sesja " + text)
                     : link(address_of("faktura", invoice->reference), "Faktura " + text));
    };
    for (std::size_t at = 0; at < entry.path.size();) {
        const std::size_t end = std::min(entry.path.find('/', at), entry.path.size());
        name(entry.path.substr(at, end - at));
        at = end + 1;
    }
    if (const auto answer = read_json(entry.answer); answer && answer->is_object())
        if (const auto it = answer->find("referenceNumber"); it != answer->end() && it->is_string())
            name(it->get<std::string>());
    return html;
}

}  // namespace

Answer request_page(const State& state, const LoggedRequest& entry) {
    const std::string target = mask_tokens(entry.target),
                      title =
                          entry.method + " " + shortened(mask_tokens(entry.path), longest_title);
    std::string faults;
    for (const std::string& fault : entry.faults) faults += badge("wait", fault) + " ";
    std::string query;
    for (const auto& [name, value] : entry.query)
        query += (query.empty() ? "" : "<br>") + xml_escape(mask_tokens(name + " = " + value));
    return page(
        title,
        section(title, "<p>" + badge(outcome_of(entry), std::to_string(entry.status)) + "</p>" +
                           facts(fact("Adres", target) + fact_html("Parametry", query) +
                                 fact("Krok", entry.step) + fact_html("Usterki", faults) +
                                 fact_html("Dotyczy", records_named(state, entry)) +
                                 fact("Czas", moment_text(entry.time)) +
                                 fact("Trwało", milliseconds_text(entry.duration_ms) + " ms") +
                                 fact("Połączenie", std::to_string(entry.connection)))) +
            headers_section(entry) +
            body_section("Treść żądania", entry.body, "Żądanie nie miało treści.") +
            body_section("Odpowiedź", entry.answer, "Odpowiedź nie miała treści."),
        {link("/", "Początek"), link("/zadania", "Żądania"), std::to_string(entry.number)});
}

}  // namespace tavrix::sandbox
