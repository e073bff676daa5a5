// The stored forms of the records. A member added later reads as its default from an older file.
#include "sandbox/basics/crypto.h"
#include "sandbox/store/model.h"

namespace tavrix::sandbox {
namespace {

Json ticks(Instant moment) {
    return moment.time_since_epoch().count();
}
Instant instant(const Json& value) {
    return Instant(Ticks(value.get<std::int64_t>()));
}

Json optional_ticks(const std::optional<Instant>& moment) {
    return moment ? ticks(*moment) : Json();
}

std::optional<Instant> optional_instant(const Json& record, const char* name) {
    const auto member = record.find(name);
    if (member == record.end() || member->is_null()) return std::nullopt;
    return instant(*member);
}

Json to_record(const Context& context) {
    return {{"type", context.type}, {"value", context.value}};
}

Context context_from(const Json& record) {
    return {record.at("type").get<std::string>(), record.at("value").get<std::string>()};
}

Json to_record(const Party& party) {
    return {{"type", party.identifier_type},
            {"identifier", party.identifier},
            {"name", party.name},
            {"role", party.role}};
}

Party party_from(const Json& record) {
    return {record.at("type"), record.at("identifier"), record.at("name"), record.at("role")};
}

Json to_record(const InvoiceSummary& summary) {
    Json record = {{"number", summary.invoice_number},
                   {"issueDate", summary.issue_date},
                   {"kind", summary.kind},
                   {"currency", summary.currency},
                   {"seller", to_record(summary.seller)},
                   {"buyer", to_record(summary.buyer)},
                   {"net", summary.net_amount},
                   {"gross", summary.gross_amount},
                   {"vat", summary.vat_amount},
                   {"selfInvoicing", summary.self_invoicing},
                   {"attachment", summary.has_attachment},
                   {"thirdParties", Json::array()}};
    for (const Party& party : summary.third_parties)
        record["thirdParties"].push_back(to_record(party));
    if (summary.authorized) record["authorized"] = to_record(*summary.authorized);
    return record;
}

InvoiceSummary summary_from(const Json& record) {
    InvoiceSummary summary;
    summary.invoice_number = record.at("number");
    summary.issue_date = record.at("issueDate");
    summary.kind = record.at("kind");
    summary.currency = record.at("currency");
    summary.seller = party_from(record.at("seller"));
    summary.buyer = party_from(record.at("buyer"));
    summary.net_amount = record.at("net");
    summary.gross_amount = record.at("gross");
    summary.vat_amount = record.at("vat");
    summary.self_invoicing = record.at("selfInvoicing");
    summary.has_attachment = record.at("attachment");
    for (const Json& party : record.at("thirdParties"))
        summary.third_parties.push_back(party_from(party));
    if (record.contains("authorized")) summary.authorized = party_from(record["authorized"]);
    return summary;
}

}  // namespace

Json to_json(const Status& status) {
    Json value = {{"code", status.code}, {"description", status.description}};
    if (!status.details.empty()) value["details"] = status.details;
    for (const auto& [name, text] : status.extensions) value["extensions"][name] = text;
    return value;
}

Status status_from_json(const Json& value) {
    Status status{value.at("code"), value.at("description"), {}, {}};
    if (value.contains("details"))
        status.details = value["details"].get<std::vector<std::string>>();
    if (value.contains("extensions"))
        for (const auto& [name, text] : value["extensions"].items())
            status.extensions.emplace_back(name, text.get<std::string>());
    return status;
}

Json to_record(const KsefToken& token) {
    return {{"reference", token.reference},
            {"hash", token.hash},
            {"context", to_record(token.context)},
            {"description", token.description},
            {"permissions", token.permissions},
            {"created", ticks(token.created)},
            {"lastUsed", optional_ticks(token.last_used)},
            {"revoked", token.revoked}};
}

KsefToken token_from_record(const Json& record) {
    KsefToken token;
    token.reference = record.at("reference");
    token.hash = record.at("hash");
    token.context = context_from(record.at("context"));
    token.description = record.at("description");
    token.permissions = record.at("permissions").get<std::vector<std::string>>();
    token.created = instant(record.at("created"));
    token.last_used = optional_instant(record, "lastUsed");
    token.revoked = record.at("revoked");
    return token;
}

Json to_record(const Authentication& it) {
    return {{"reference", it.reference},
            {"context", to_record(it.context)},
            {"tokenReference", it.token_reference},
            {"tokenHash", it.token_hash},
            {"permissions", it.permissions},
            {"started", ticks(it.started)},
            {"outcome", to_json(it.outcome)},
            {"polls", it.polls},
            {"finished", it.finished},
            {"redeemed", it.redeemed},
            {"revoked", it.revoked},
            {"lastRefresh", optional_ticks(it.last_refresh)},
            {"refreshValidUntil", optional_ticks(it.refresh_valid_until)}};
}

Authentication authentication_from_record(const Json& record) {
    Authentication it;
    it.reference = record.at("reference");
    it.context = context_from(record.at("context"));
    it.token_reference = record.at("tokenReference");
    it.token_hash = record.at("tokenHash");
    it.permissions = record.at("permissions").get<std::vector<std::string>>();
    it.started = instant(record.at("started"));
    it.outcome = status_from_json(record.at("outcome"));
    it.polls = record.at("polls");
    it.finished = record.at("finished");
    it.redeemed = record.at("redeemed");
    it.revoked = record.at("revoked");
    it.last_refresh = optional_instant(record, "lastRefresh");
    it.refresh_valid_until = optional_instant(record, "refreshValidUntil");
    return it;
}

Json to_record(const Session& session) {
    return {{"reference", session.reference},
            {"kind", int(session.kind)},
            {"context", to_record(session.context)},
            {"authentication", session.authentication_reference},
            {"formCode",
             {session.form_code.system_code, session.form_code.schema_version,
              session.form_code.value}},
            {"key", base64_encode(session.symmetric_key)},
            {"vector", base64_encode(session.initialization_vector)},
            {"created", ticks(session.created)},
            {"updated", ticks(session.updated)},
            {"validUntil", ticks(session.valid_until)},
            {"closed", optional_ticks(session.closed)},
            {"stage", int(session.stage)},
            {"status", to_json(session.status)},
            {"polls", session.polls},
            {"upoReference", session.upo_reference}};
}

Session session_from_record(const Json& record) {
    Session session;
    session.reference = record.at("reference");
    session.kind = SessionKind(record.at("kind").get<int>());
    session.context = context_from(record.at("context"));
    session.authentication_reference = record.at("authentication");
    const Json& form = record.at("formCode");
    session.form_code = {form.at(0), form.at(1), form.at(2)};
    session.symmetric_key = base64_decode(record.at("key").get<std::string>()).value_or("");
    session.initialization_vector =
        base64_decode(record.at("vector").get<std::string>()).value_or("");
    session.created = instant(record.at("created"));
    session.updated = instant(record.at("updated"));
    session.valid_until = instant(record.at("validUntil"));
    session.closed = optional_instant(record, "closed");
    session.stage = SessionStage(record.at("stage").get<int>());
    session.status = status_from_json(record.at("status"));
    session.polls = record.at("polls");
    session.upo_reference = record.at("upoReference");
    return session;
}

Json to_record(const Invoice& invoice) {
    Json record = {{"reference", invoice.reference},
                   {"session", invoice.session_reference},
                   {"ordinal", invoice.ordinal},
                   {"hash", invoice.invoice_hash},
                   {"size", invoice.invoice_size},
                   {"offlineDeclared", invoice.offline_declared},
                   {"hashOfCorrected", invoice.hash_of_corrected},
                   {"received", ticks(invoice.received)},
                   {"stage", int(invoice.stage)},
                   {"stageSince", ticks(invoice.stage_since)},
                   {"polls", invoice.polls},
                   {"status", to_json(invoice.status)},
                   {"offline", invoice.offline},
                   {"ksefNumber", invoice.ksef_number},
                   {"acquired", ticks(invoice.acquired)}};
    if (invoice.summary) record["summary"] = to_record(*invoice.summary);
    return record;
}

Invoice invoice_from_record(const Json& record) {
    Invoice invoice;
    invoice.reference = record.at("reference");
    invoice.session_reference = record.at("session");
    invoice.ordinal = record.at("ordinal");
    invoice.invoice_hash = record.at("hash");
    invoice.invoice_size = record.at("size");
    invoice.offline_declared = record.at("offlineDeclared");
    invoice.hash_of_corrected = record.at("hashOfCorrected");
    invoice.received = instant(record.at("received"));
    invoice.stage = InvoiceStage(record.at("stage").get<int>());
    invoice.stage_since = instant(record.at("stageSince"));
    invoice.polls = record.at("polls");
    invoice.status = status_from_json(record.at("status"));
    invoice.offline = record.at("offline");
    invoice.ksef_number = record.at("ksefNumber");
    invoice.acquired = instant(record.at("acquired"));
    if (record.contains("summary")) invoice.summary = summary_from(record["summary"]);
    return invoice;
}

}  // namespace tavrix::sandbox
