#include "sandbox/store/records.h"

#include <nlohmann/json.hpp>

namespace nlohmann {

template <>
struct adl_serializer<tavrix::sandbox::Instant> {
    static void to_json(json& value, tavrix::sandbox::Instant moment) {
        value = moment.time_since_epoch().count();
    }
    static void from_json(const json& value, tavrix::sandbox::Instant& moment) {
        moment = tavrix::sandbox::Instant(tavrix::sandbox::Ticks(value.get<std::int64_t>()));
    }
};

template <typename Value>
struct adl_serializer<std::optional<Value>> {
    static void to_json(json& value, const std::optional<Value>& from) {
        value = from ? json(*from) : json();
    }
    static void from_json(const json& value, std::optional<Value>& to) {
        if (!value.is_null()) to = value.get<Value>();
    }
};

}  // namespace nlohmann

namespace tavrix::sandbox {

// A member added later reads as its default from an older file. The order of members means nothing
// here, unlike in answers.
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(Status, code, description, details, extensions)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(Context, type, value)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(FormCode, system_code, schema_version, value)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(Party, identifier_type, identifier, name, role)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(InvoiceSummary, invoice_number, issue_date, kind,
                                                currency, seller, buyer, third_parties, authorized,
                                                net_amount, gross_amount, vat_amount,
                                                self_invoicing, has_attachment)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(KsefToken, reference, hash, context, description,
                                                permissions, created, last_used, revoked)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(Certificate, serial, name, type, common_name, nip,
                                                valid_from, valid_to, requested, revoked)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(Authentication, reference, context, token_reference,
                                                token_hash, permissions, allowed_ips, started,
                                                outcome, polls, finished, redeemed, revoked,
                                                last_refresh, refresh_valid_until)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(PackagePart, size, hash)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(Package, size, hash, compression, parts,
                                                offline_declared, upload_until, unpacked, failure)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(Session, reference, kind, context,
                                                authentication_reference, form_code, symmetric_key,
                                                initialization_vector, created, updated,
                                                valid_until, closed, stage, status, polls, package,
                                                upo_reference)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(Invoice, reference, session_reference, ordinal,
                                                file_name, invoice_hash, invoice_size,
                                                offline_declared, hash_of_corrected, received,
                                                stage, stage_since, polls, status, summary, offline,
                                                ksef_number, acquired, stored)

namespace {

constexpr const char* record_kinds[] = {"certificate", "token",       "authentication",
                                        "session",     "session-upo", "invoice",
                                        "encrypted",   "xml",         "upo"};

template <typename Record>
void write_record(Store& store, const char* kind, const std::string& key, const Record& record) {
    using nlohmann::json;
    const std::string text = json(record).dump(-1, ' ', false, json::error_handler_t::replace);
    store.write(kind, key, text);
}

template <typename Record, typename Enter>
void each_record(Store& store, const char* kind, Enter enter) {
    store.each(kind, [&](const std::string&, const std::string& text) {
        enter(nlohmann::json::parse(text).get<Record>());
    });
}

void write_text(Store& store, const char* kind, const std::string& key, const std::string& text) {
    if (!text.empty()) store.write(kind, key, text);
}

}  // namespace

void save(Store& store, const KsefToken& token) {
    write_record(store, "token", token.reference, token);
}

void save(Store& store, const Certificate& certificate) {
    write_record(store, "certificate", certificate.serial, certificate);
}

void save(Store& store, const Authentication& authentication) {
    write_record(store, "authentication", authentication.reference, authentication);
}

void save(Store& store, const Session& session) {
    write_record(store, "session", session.reference, session);
    write_text(store, "session-upo", session.reference, session.upo);
}

void save(Store& store, const Invoice& invoice) {
    write_record(store, "invoice", invoice.reference, invoice);
    if (invoice.encrypted.empty()) store.forget("encrypted", invoice.reference);
    write_text(store, "encrypted", invoice.reference, invoice.encrypted);
    write_text(store, "xml", invoice.reference, invoice.xml);
    write_text(store, "upo", invoice.reference, invoice.upo);
}

void load(Store& store, State& state) {
    const auto text = [&](const char* kind, const std::string& key) {
        return store.read(kind, key).value_or("");
    };
    each_record<KsefToken>(store, "token",
                           [&](KsefToken token) { state.tokens[token.reference] = token; });
    each_record<Certificate>(store, "certificate", [&](Certificate certificate) {
        state.certificates[certificate.serial] = certificate;
    });
    each_record<Authentication>(store, "authentication", [&](Authentication authentication) {
        state.add(std::move(authentication));
    });
    each_record<Session>(store, "session", [&](Session session) {
        session.upo = text("session-upo", session.reference);
        state.add(std::move(session));
    });
    each_record<Invoice>(store, "invoice", [&](Invoice invoice) {
        // Files written before the date was kept put it a tenth of a millisecond after the number.
        if (invoice.stored < invoice.acquired) invoice.stored = invoice.acquired + Ticks(1000);
        invoice.encrypted = text("encrypted", invoice.reference);
        invoice.xml = text("xml", invoice.reference);
        invoice.upo = text("upo", invoice.reference);
        // The counts of a session follow from its invoices and are not stored twice.
        if (Session* session = look_up(state.sessions, invoice.session_reference)) {
            session->invoices.push_back(invoice.reference);
            if (invoice.stage == InvoiceStage::finished) session->count(invoice.status);
        }
        state.add(std::move(invoice));
    });
}

void forget_state(Store& store) {
    for (const char* kind : record_kinds) store.forget(kind);
}

}  // namespace tavrix::sandbox
