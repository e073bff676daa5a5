#include "sandbox/http/state_json.h"

#include <algorithm>

#include "sandbox/basics/crypto.h"

namespace tavrix::sandbox {
namespace {

Json invoice_json(const Service& service, const Invoice& invoice) {
    Json json = {{"referenceNumber", invoice.reference},
                 {"sessionReferenceNumber", invoice.session_reference},
                 {"ordinalNumber", invoice.ordinal},
                 {"status", invoice.status},
                 {"ksefNumber", invoice.ksef_number},
                 {"invoiceHash", invoice.invoice_hash},
                 {"invoiceSize", invoice.invoice_size},
                 {"offlineMode", invoice.offline_declared},
                 {"hashOfCorrectedInvoice", invoice.hash_of_corrected},
                 {"invoicingDate", service.time_text(invoice.received)},
                 {"finished", invoice.stage == InvoiceStage::finished},
                 {"xmlSize", invoice.xml.size()},
                 {"xmlHash", invoice.xml.empty() ? "" : sha256_base64(invoice.xml)},
                 {"upoHash", invoice.upo.empty() ? "" : sha256_base64(invoice.upo)}};
    if (invoice.summary) {
        json["invoicingMode"] = mode_name(invoice);
        json["invoiceNumber"] = invoice.summary->invoice_number;
        json["issueDate"] = invoice.summary->issue_date;
        json["sellerNip"] = invoice.summary->seller.identifier;
    }
    return json;
}

Json session_json(const Service& service, const Session& session) {
    constexpr const char* stages[] = {"open", "closed", "finished"};
    return {{"referenceNumber", session.reference},
            {"type", session.kind == SessionKind::online ? "Online" : "Batch"},
            {"context", session.context},
            {"authenticationReferenceNumber", session.authentication_reference},
            {"stage", stages[int(session.stage)]},
            {"status", session.status},
            {"formCode", session.form_code},
            {"dateCreated", service.time_text(session.created)},
            {"invoices", session.invoices},
            {"successfulInvoiceCount", session.successful},
            {"failedInvoiceCount", session.failed},
            {"upoReferenceNumber", session.upo_reference}};
}

Json authentication_json(const Service& service, const Authentication& it) {
    return {{"referenceNumber", it.reference},
            {"context", it.context},
            {"tokenReferenceNumber", it.token_reference},
            {"startDate", service.time_text(it.started)},
            {"outcome", it.outcome},
            {"redeemed", it.redeemed},
            {"revoked", it.revoked}};
}

}  // namespace

Json state_json(const ControlRoom& room, const StatePage& page) {
    const Service& service = room.service;
    const State& state = service.state;
    bool more = false;
    const auto part = [&](const auto& all, auto render) {
        const std::size_t begin = std::min(page.number * page.size, all.size());
        const std::size_t end = std::min(begin + page.size, all.size());
        more = more || end < all.size();
        Json list = Json::array();
        for (std::size_t at = begin; at < end; ++at) list.push_back(render(all[at]));
        return list;
    };
    const auto records = [&](const auto& order, const auto& by_reference, auto render) {
        return part(order, [&](const std::string& reference) {
            return render(service, by_reference.at(reference));
        });
    };
    Json json = {{"now", service.time_text(service.now())},
                 {"authentications",
                  records(state.authentication_order, state.authentications, authentication_json)},
                 {"sessions", records(state.session_order, state.sessions, session_json)},
                 {"invoices", records(state.invoice_order, state.invoices, invoice_json)},
                 {"faults", service.faults.to_json()},
                 {"counters",
                  {{"requests", room.log.total()},
                   {"steps", room.log.counts()},
                   {"sessions", state.sessions.size()},
                   {"waiting", state.pending_invoices.size() + state.closing_sessions.size()},
                   {"invoices", state.invoices.size()}}},
                 {"requests", part(room.log.entries(), [&](const LoggedRequest& entry) {
                      return to_json(entry, service.options.time);
                  })}};
    json["page"] = page.number;
    json["hasMore"] = more;
    return json;
}

}  // namespace tavrix::sandbox
