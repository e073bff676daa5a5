#include "sandbox/pages/page.h"

#include "sandbox/pages/html.h"
#include "sandbox/pages/lists.h"
#include "sandbox/pages/polish.h"
#include "sandbox/pages/record_pages.h"
#include "sandbox/pages/settings_page.h"
#include "sandbox/pages/start_page.h"

namespace tavrix::sandbox {
namespace {

/// As long as there is nothing to look at, the first page says how that changes.
Answer overview(const PageRoom& room, const Request& request) {
    const State& state = room.service.state;
    const bool nothing_yet = state.invoice_order.empty() && state.session_order.empty();
    return page(
        "Piaskownica KSeF",
        search_form("/szukaj", Search(Request())) +
            live("lista",
                 settings_notice(room.service) +
                     (nothing_yet ? start_section(room.service.options, request.origin)
                                  : newest_section(invoice_list(state, state.invoice_order)) +
                                        newest_section(session_list(state))) +
                     newest_section(request_list(room.log))));
}

List found_in(List list, Found found, const Search& search) {
    list.address += search.query();
    list.title += " (" + count_text(found.indexes.size()) + ")";
    return narrowed(std::move(list), std::move(found.indexes));
}

/// The newest finds of each kind.
Answer search_page(const PageRoom& room, const Search& search) {
    const State& state = room.service.state;
    std::string finds;
    if (search.narrows()) {
        Found invoices = find_invoices(state, state.invoice_order, search);
        finds =
            incomplete_note(invoices.complete) +
            newest_section(
                found_in(invoice_list(state, state.invoice_order), std::move(invoices), search)) +
            newest_section(found_in(session_list(state), find_sessions(state, search), search)) +
            newest_section(
                found_in(request_list(room.log), find_requests(room.log, search), search));
    }
    return page("Szukaj", search_form("/szukaj", search) + live("lista", finds),
                {link("/", "Początek"), "Szukaj"});
}

/// The page of a list, narrowed where the query string says so.
std::optional<Answer> page_of_list(const PageRoom& room, const Request& request) {
    const State& state = room.service.state;
    const Search search(request);
    const auto show = [&](List list, auto find) {
        Found found;
        if (search.narrows()) {
            found = find();
            list = narrowed(std::move(list), std::move(found.indexes));
        }
        return list_page(list, search, request, found.complete);
    };
    if (request.path == "/faktury")
        return show(invoice_list(state, state.invoice_order),
                    [&] { return find_invoices(state, state.invoice_order, search); });
    if (request.path == "/sesje")
        return show(session_list(state), [&] { return find_sessions(state, search); });
    if (request.path == "/zadania")
        return show(request_list(room.log), [&] { return find_requests(room.log, search); });
    return std::nullopt;
}

}  // namespace

Answer show_page(PageRoom& room, const Request& request) {
    if (request.method == "POST") return submit_settings(room, request);
    if (request.method == "GET" || request.method == "HEAD") {
        if (request.path == "/") return overview(room, request);
        if (request.path == "/ustawienia") return settings_page(room);
        if (request.path == "/szukaj") return search_page(room, Search(request));
        if (request.path == "/start")
            return page("Jak zacząć", start_section(room.service.options, request.origin),
                        {link("/", "Początek"), "Jak zacząć"});
        if (auto answer = page_of_list(room, request)) return *answer;
        if (auto answer = page_of_record(room, request)) return *answer;
    }
    return notice_page(404, "Nie ma takiej strony", "Pod tym adresem nic tu nie ma.");
}

}  // namespace tavrix::sandbox
