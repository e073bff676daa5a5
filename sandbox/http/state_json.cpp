#include "sandbox/http/state_json.h"

#include "sandbox/basics/crypto.h"

namespace tavrix::sandbox {
namespace {

Json context_json(const Context& context) {
    return {{"type", context.type}, {"value", context.value}};
}

Json invoice_json(const Service& service, const Invoice& invoice) {
    Json json = {{"referenceNumber", invoice.reference},
                 {"sessionReferenceNumber", invoice.session_reference},
                 {"ordinalNumber", invoice.ordinal},
                 {"status", to_json(invoice.status)},
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
        json["invoicingMode"] = invoice.offline ? "Offline" : "Online";
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
            {"context", context_json(session.context)},
            {"authenticationReferenceNumber", session.authentication_reference},
            {"stage", stages[int(session.stage)]},
            {"status", to_json(session.status)},
            {"formCode",
             {{"systemCode", session.form_code.system_code},
              {"schemaVersion", session.form_code.schema_version},
              {"value", session.form_code.value}}},
            {"dateCreated", service.time_text(session.created)},
            {"invoices", session.invoices},
            {"successfulInvoiceCount", session.successful},
            {"failedInvoiceCount", session.failed},
            {"upoReferenceNumber", session.upo_reference}};
}

Json authentication_json(const Service& service, const Authentication& it) {
    return {{"referenceNumber", it.reference},
            {"context", context_json(it.context)},
            {"tokenReferenceNumber", it.token_reference},
            {"startDate", service.time_text(it.started)},
            {"outcome", to_json(it.outcome)},
            {"redeemed", it.redeemed},
            {"revoked", it.revoked}};
}

}  // namespace

Json state_json(const ControlRoom& room) {
    const Service& service = room.service;
    Json authentications = Json::array(), sessions = Json::array(), invoices = Json::array(),
         requests = Json::array(), steps = Json::object();
    for (const std::string& reference : service.state.authentication_order)
        authentications.push_back(
            authentication_json(service, service.state.authentications.at(reference)));
    for (const std::string& reference : service.state.session_order)
        sessions.push_back(session_json(service, service.state.sessions.at(reference)));
    for (const std::string& reference : service.state.invoice_order)
        invoices.push_back(invoice_json(service, service.state.invoices.at(reference)));
    for (const LoggedRequest& entry : room.log.entries())
        requests.push_back(to_json(entry, service.options.time));
    for (const auto& [step, count] : room.log.counts()) steps[step] = count;
    return {{"now", service.time_text(service.now())},
            {"authentications", authentications},
            {"sessions", sessions},
            {"invoices", invoices},
            {"faults", service.faults.to_json()},
            {"counters",
             {{"requests", room.log.total()},
              {"steps", steps},
              {"sessions", sessions.size()},
              {"invoices", invoices.size()}}},
            {"requests", requests}};
}

}  // namespace tavrix::sandbox
