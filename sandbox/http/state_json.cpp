#include "sandbox/http/state_json.h"

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

Json state_json(const ControlRoom& room) {
    const Service& service = room.service;
    const State& state = service.state;
    const auto all = [&](const auto& order, const auto& records, auto render) {
        Json list = Json::array();
        for (const std::string& reference : order)
            list.push_back(render(service, records.at(reference)));
        return list;
    };
    Json requests = Json::array();
    for (const LoggedRequest& entry : room.log.entries())
        requests.push_back(to_json(entry, service.options.time));
    return {{"now", service.time_text(service.now())},
            {"authentications",
             all(state.authentication_order, state.authentications, authentication_json)},
            {"sessions", all(state.session_order, state.sessions, session_json)},
            {"invoices", all(state.invoice_order, state.invoices, invoice_json)},
            {"faults", service.faults.to_json()},
            {"counters",
             {{"requests", room.log.total()},
              {"steps", room.log.counts()},
              {"sessions", state.sessions.size()},
              {"invoices", state.invoices.size()}}},
            {"requests", requests}};
}

}  // namespace tavrix::sandbox
