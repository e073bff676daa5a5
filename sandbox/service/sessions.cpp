#include "sandbox/service/operations.h"

#include <algorithm>

#include "sandbox/basics/text.h"
#include "sandbox/exchange/body.h"
#include "sandbox/service/download_links.h"
#include "sandbox/service/processing.h"
#include "sandbox/service/session_opening.h"
#include "sandbox/store/statuses.h"

namespace tavrix::sandbox {
namespace {

constexpr std::string_view common_statuses[] = {"InProgress", "Succeeded", "Failed", "Cancelled"};

/// One of them, by which the session list is filtered.
const char* common_status(const Session& session) {
    if (session.stage != SessionStage::finished) return "InProgress";
    if (session.status.code == 200) return "Succeeded";
    return session.status.code == 440 ? "Cancelled" : "Failed";
}

/// A pair of parameters, `nameFrom` and `nameTo`.
struct Span {
    std::optional<Instant> from, to;

    bool holds(std::optional<Instant> moment) const {
        if (!from && !to) return true;
        return moment && (!from || *moment >= *from) && (!to || *moment <= *to);
    }
};

Span read_span(const Request& request, const std::string& name) {
    const auto bound = [&](const std::string& parameter) -> std::optional<Instant> {
        const auto text = request.parameter(parameter);
        if (!text) return std::nullopt;
        const auto value = parse_instant(*text);
        if (!value) throw invalid_input("Parametr '" + parameter + "' ma nieprawidłowy format.");
        return value;
    };
    return {bound(name + "From"), bound(name + "To")};
}

struct SessionFilter {
    SessionKind kind;
    std::vector<std::string> statuses;
    std::optional<std::string> reference;
    Span created, closed, modified;

    bool admits(const Session& session) const {
        return session.kind == kind &&
               (statuses.empty() || contains(statuses, common_status(session))) &&
               (!reference || session.reference == *reference) && created.holds(session.created) &&
               closed.holds(session.closed) && modified.holds(session.updated);
    }
};

/// True when a client may see a session of its context in the list: with the right to write only,
/// those that its own token opened.
bool may_list(const Service& service, const Authentication& caller, const Session& session) {
    if (contains(caller.permissions, "Introspection") ||
        contains(caller.permissions, "EnforcementOperations"))
        return true;
    const auto& opener = service.state.authentications.at(session.authentication_reference);
    return opener.token_hash == caller.token_hash;
}

SessionFilter read_filter(const Request& request) {
    const std::string kind = request.parameter("sessionType").value_or("");
    if (kind != "Online" && kind != "Batch")
        throw invalid_input("Parametr 'sessionType' musi mieć wartość Online lub Batch.");
    SessionFilter filter{kind == "Online" ? SessionKind::online : SessionKind::batch,
                         request.parameters_named("statuses"),
                         request.parameter("referenceNumber"),
                         read_span(request, "dateCreated"),
                         read_span(request, "dateClosed"),
                         read_span(request, "dateModified")};
    if (filter.reference) check_reference(*filter.reference);
    for (const std::string& status : filter.statuses)
        if (!contains(common_statuses, status))
            throw invalid_input("Nieznany status sesji: " + status + ".");
    return filter;
}

/// What older clients take for the number of a session's document: that of its first invoice whose
/// number could be read.
std::string first_invoice_number(const State& state, const Session& session) {
    for (const std::string& reference : session.invoices)
        if (const auto& summary = state.invoices.at(reference).summary;
            summary && !summary->invoice_number.empty())
            return summary->invoice_number;
    return {};
}

}  // namespace

Answer open_online_session(Service& service, Request& request) {
    Session session = read_new_session(service, request, read_body(request), SessionKind::online);
    if (session.symmetric_key.empty()) {
        // It exists and is of no use.
        session.stage = SessionStage::finished;
        session.status = make_status(StatusOf::online_session, 415);
    }
    const Session& kept = service.state.add(std::move(session));
    service.save(kept);
    return Answer::json(201, {{"referenceNumber", kept.reference},
                              {"validUntil", service.time_text(kept.valid_until)}});
}

Answer close_online_session(Service& service, Request& request) {
    Session& session = service.session_of(request, "odnaleziona");
    check_may_close(session, SessionKind::online);
    close_session(service, session, service.now());
    return Answer::empty(204);
}

Answer session_status(Service& service, Request& request) {
    Session& session = service.session_of(request);
    const Status status = observe(service, session);
    Json answer = {{"status", status},
                   {"dateCreated", service.time_text(session.created)},
                   {"dateUpdated", service.time_text(session.updated)},
                   {"validUntil", service.time_text(session.valid_until)}};
    if (!session.upo_reference.empty()) {
        const StorageLink link = session_upo_link(service, request, session);
        answer["upo"]["pages"] =
            Json::array({{{"referenceNumber", session.upo_reference},
                          {"downloadUrl", link.url},
                          {"downloadUrlExpirationDate", service.time_text(link.valid_until)}}});
    }
    // Of a package nothing is counted before it is unpacked, and nothing ever when it cannot be.
    if (!session.package || !session.invoices.empty())
        answer["invoiceCount"] = session.invoices.size();
    // The service leaves out a count until there is something to count; the list of sessions, whose
    // counts are required, says 0.
    if (session.successful > 0) answer["successfulInvoiceCount"] = session.successful;
    if (session.failed > 0) answer["failedInvoiceCount"] = session.failed;
    return Answer::json(200, answer);
}

Answer list_sessions(Service& service, Request& request) {
    const SessionFilter filter = read_filter(request);
    const Authentication& caller = service.authentication_of(request);
    std::vector<const Session*> found;
    for (auto reference = service.state.session_order.rbegin();
         reference != service.state.session_order.rend(); ++reference) {
        const Session& session = service.state.sessions.at(*reference);
        if (session.context == caller.context && filter.admits(session) &&
            may_list(service, caller, session))
            found.push_back(&session);
    }
    return list_answer(request, 1000, "sessions", found, [&](const Session* session) {
        Json entry = {{"referenceNumber", session->reference}};
        if (service.options.classic_order)
            entry["invoiceNumber"] = first_invoice_number(service.state, *session);
        entry.update(Json{{"status", session->status},
                          {"dateCreated", service.time_text(session->created)},
                          {"dateUpdated", service.time_text(session->updated)},
                          {"validUntil", service.time_text(session->valid_until)},
                          {"totalInvoiceCount", session->invoices.size()},
                          {"successfulInvoiceCount", session->successful},
                          {"failedInvoiceCount", session->failed}});
        return entry;
    });
}

}  // namespace tavrix::sandbox
