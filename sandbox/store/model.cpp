#include "sandbox/store/model.h"

#include <algorithm>

namespace tavrix::sandbox {

Authentication& State::add(Authentication authentication) {
    authentication_order.push_back(authentication.reference);
    const std::string reference = authentication.reference;
    return authentications.insert_or_assign(reference, std::move(authentication)).first->second;
}

Session& State::add(Session session) {
    session_order.push_back(session.reference);
    if (session.stage == SessionStage::open) open_sessions.push_back(session.reference);
    if (session.stage == SessionStage::closed) closing_sessions.push_back(session.reference);
    const std::string reference = session.reference;
    return sessions.insert_or_assign(reference, std::move(session)).first->second;
}

Invoice& State::add(Invoice invoice) {
    invoice_order.push_back(invoice.reference);
    invoices_by_hash.emplace(invoice.invoice_hash, invoice.reference);
    if (!invoice.hash_of_corrected.empty())
        corrections_by_hash.emplace(invoice.hash_of_corrected, invoice.reference);
    if (invoice.stage != InvoiceStage::finished) pending_invoices.push_back(invoice.reference);
    const std::string reference = invoice.reference;
    Invoice& kept = invoices.insert_or_assign(reference, std::move(invoice)).first->second;
    if (!kept.ksef_number.empty()) index_accepted(kept);
    return kept;
}

void State::index_accepted(const Invoice& invoice) {
    invoice_by_ksef_number[invoice.ksef_number] = invoice.reference;
    if (invoice.summary) invoice_by_identity[identity_of(*invoice.summary)] = invoice.reference;
}

const Invoice* State::accepted(const std::string& ksef_number) const {
    const std::string* reference = look_up(invoice_by_ksef_number, ksef_number);
    return reference == nullptr ? nullptr : &invoices.at(*reference);
}

std::string identity_of(const InvoiceSummary& summary) {
    return summary.seller.identifier + '\n' + summary.kind + '\n' + summary.invoice_number;
}

bool concerns(const InvoiceSummary& summary, const std::string& nip) {
    return summary.seller.identifier == nip || summary.buyer.identifier == nip ||
           (summary.authorized && summary.authorized->identifier == nip) ||
           std::any_of(summary.third_parties.begin(), summary.third_parties.end(),
                       [&](const Party& party) { return party.identifier.starts_with(nip); });
}

const char* mode_name(const Invoice& invoice) {
    return invoice.offline ? "Offline" : "Online";
}

void to_json(Json& json, const Status& status) {
    json = {{"code", status.code}, {"description", status.description}};
    if (!status.details.empty()) json["details"] = status.details;
    for (const auto& [name, text] : status.extensions) json["extensions"][name] = text;
}

void to_json(Json& json, const Context& context) {
    json = {{"type", context.type}, {"value", context.value}};
}

void to_json(Json& json, const FormCode& form) {
    json = {{"systemCode", form.system_code},
            {"schemaVersion", form.schema_version},
            {"value", form.value}};
}

}  // namespace tavrix::sandbox
