#include "sandbox/service/operations.h"

#include <algorithm>
#include <functional>

#include "sandbox/basics/text.h"
#include "sandbox/exchange/body.h"

namespace tavrix::sandbox {
namespace {

constexpr std::size_t most_results = 10'000;

// TRodzajFaktury of FA (3) to InvoiceType of the contract.
constexpr std::pair<const char*, const char*> kind_names[] = {
    {"VAT", "Vat"},        {"KOR", "Kor"},      {"ZAL", "Zal"},
    {"ROZ", "Roz"},        {"UPR", "Upr"},      {"KOR_ZAL", "KorZal"},
    {"KOR_ROZ", "KorRoz"}, {"VAT_RR", "VatRr"}, {"KOR_VAT_RR", "KorVatRr"}};

const char* invoice_type(const std::string& kind) {
    for (const auto& [schema_name, name] : kind_names)
        if (kind == schema_name) return name;
    return "Vat";
}

Json named(Json json, const Party& party) {
    if (!party.name.empty()) json["name"] = party.name;
    return json;
}

/// A seller or an authorised subject, who always has a tax number.
Json company_json(const Party& party) {
    return named({{"nip", party.identifier}}, party);
}

Json party_json(const Party& party) {
    Json identifier = {{"type", party.identifier_type}};
    if (!party.identifier.empty()) identifier["value"] = party.identifier;
    return named({{"identifier", identifier}}, party);
}

/// The order of members is the service's own; older clients read them by position.
Json metadata_json(const Service& service, const Invoice& invoice, const FormCode& form) {
    const InvoiceSummary& summary = *invoice.summary;
    Json json = {{"ksefNumber", invoice.ksef_number},
                 {"invoiceNumber", summary.invoice_number},
                 {"issueDate", summary.issue_date},
                 {"invoicingDate", service.time_text(invoice.received)},
                 {"acquisitionDate", service.time_text(invoice.acquired)},
                 {"permanentStorageDate", service.time_text(permanent_storage_date(invoice))},
                 {"seller", company_json(summary.seller)},
                 {"buyer", party_json(summary.buyer)},
                 {"netAmount", summary.net_amount},
                 {"grossAmount", summary.gross_amount},
                 {"vatAmount", summary.vat_amount},
                 {"currency", summary.currency},
                 {"invoicingMode", mode_name(invoice)},
                 {"invoiceType", invoice_type(summary.kind)},
                 {"formCode", form},
                 {"isSelfInvoicing", summary.self_invoicing},
                 {"hasAttachment", summary.has_attachment},
                 {"invoiceHash", invoice.invoice_hash}};
    if (!invoice.hash_of_corrected.empty())
        json["hashOfCorrectedInvoice"] = invoice.hash_of_corrected;
    json["thirdSubjects"] = Json::array();
    for (const Party& party : summary.third_parties) {
        json["thirdSubjects"].push_back(party_json(party));
        json["thirdSubjects"].back()["role"] = party.role;
    }
    if (summary.authorized) {
        json["authorizedSubject"] = company_json(*summary.authorized);
        json["authorizedSubject"]["role"] = summary.authorized->role;
    }
    return json;
}

using Condition = std::function<bool(const Invoice&, const FormCode&)>;

bool takes_part(const InvoiceSummary& summary, const std::string& subject, const std::string& nip) {
    if (subject == "Subject1") return summary.seller.identifier == nip;
    if (subject == "Subject2") return summary.buyer.identifier == nip;
    if (subject == "SubjectAuthorized")
        return summary.authorized && summary.authorized->identifier == nip;
    return std::any_of(summary.third_parties.begin(), summary.third_parties.end(),
                       [&](const Party& party) { return party.identifier.starts_with(nip); });
}

struct DateRange {
    std::string type;
    Instant from;
    Instant to;

    Instant moment_of(const Invoice& invoice) const {
        if (type == "Issue") return parse_instant(invoice.summary->issue_date).value_or(Instant());
        return type == "Invoicing" ? invoice.received : permanent_storage_date(invoice);
    }
};

Instant required_moment(const Json& range, const char* name) {
    const auto moment = parse_instant(required_text(range, name));
    if (!moment) throw invalid_input(std::string("Pole '") + name + "' ma nieprawidłowy format.");
    return *moment;
}

DateRange read_date_range(const Json& body, Instant now) {
    const Json& range = required_object(body, "dateRange");
    DateRange result{required_text(range, "dateType"), required_moment(range, "from"), now};
    if (result.type != "Issue" && result.type != "Invoicing" && result.type != "PermanentStorage")
        throw invalid_input("Nieznany typ daty: " + result.type + ".");
    if (given(range, "to") != nullptr) result.to = required_moment(range, "to");
    if (result.to < result.from)
        throw invalid_input("Początek zakresu dat jest późniejszy niż jego koniec.");
    return result;
}

/// The filters beside subject and dates.
std::vector<Condition> read_conditions(const Json& body) {
    std::vector<Condition> conditions;
    const auto text = [&](const char* name, auto test) {
        const std::string value = optional_text(body, name);
        if (!value.empty())
            conditions.push_back([=](auto& it, auto& form) { return test(it, form, value); });
    };
    text("ksefNumber", [](auto& it, auto&, auto& value) { return it.ksef_number == value; });
    text("invoiceNumber",
         [](auto& it, auto&, auto& value) { return it.summary->invoice_number == value; });
    text("sellerNip",
         [](auto& it, auto&, auto& value) { return it.summary->seller.identifier == value; });
    text("invoicingMode",
         [](auto& it, auto&, auto& value) { return it.offline == (value == "Offline"); });
    text("formType", [](auto&, auto& form, auto& value) { return form.value == value; });
    const auto flag = [&](const char* name, bool InvoiceSummary::*member) {
        if (given(body, name) == nullptr) return;
        const bool wanted = optional_flag(body, name);
        conditions.push_back(
            [=](const Invoice& it, const FormCode&) { return (*it.summary).*member == wanted; });
    };
    flag("isSelfInvoicing", &InvoiceSummary::self_invoicing);
    flag("hasAttachment", &InvoiceSummary::has_attachment);
    const auto list = [&](const char* name, auto value_of) {
        if (given(body, name) == nullptr) return;
        const auto wanted = text_list(body, name);
        if (wanted.empty()) return;
        conditions.push_back([=](const Invoice& it, const FormCode&) {
            return contains(wanted, value_of(*it.summary));
        });
    };
    list("currencyCodes", [](const InvoiceSummary& it) { return it.currency; });
    list("invoiceTypes",
         [](const InvoiceSummary& it) { return std::string(invoice_type(it.kind)); });

    if (body.contains("buyerIdentifier") && body["buyerIdentifier"].is_object()) {
        const std::string type = required_text(body["buyerIdentifier"], "type");
        const std::string value = optional_text(body["buyerIdentifier"], "value");
        conditions.push_back([=](const Invoice& it, const FormCode&) {
            return it.summary->buyer.identifier_type == type &&
                   it.summary->buyer.identifier == value;
        });
    }
    if (body.contains("amount") && body["amount"].is_object()) {
        const Json amount = body["amount"];
        const std::string type = required_text(amount, "type");
        conditions.push_back([=](const Invoice& it, const FormCode&) {
            const double value = type == "Netto"    ? it.summary->net_amount
                                 : type == "Brutto" ? it.summary->gross_amount
                                                    : it.summary->vat_amount;
            const auto bound = [&](const char* name) {
                return amount.contains(name) && amount[name].is_number();
            };
            return (!bound("from") || value >= amount["from"].get<double>()) &&
                   (!bound("to") || value <= amount["to"].get<double>());
        });
    }
    return conditions;
}

std::size_t page_offset(const Request& request) {
    const std::string text = request.parameter("pageOffset").value_or("0");
    const auto offset = number_of<std::size_t>(text);
    if (!offset || *offset > most_results)
        throw invalid_input("Parametr 'pageOffset' ma nieprawidłową wartość.");
    return *offset;
}

}  // namespace

Answer query_metadata(Service& service, Request& request) {
    const Json body = read_body(request);
    const std::string subject = required_text(body, "subjectType");
    if (subject != "Subject1" && subject != "Subject2" && subject != "Subject3" &&
        subject != "SubjectAuthorized")
        throw invalid_input("Nieznany typ podmiotu: " + subject + ".");
    const std::string order = request.parameter("sortOrder").value_or("Asc");
    if (order != "Asc" && order != "Desc")
        throw invalid_input("Parametr 'sortOrder' musi mieć wartość Asc lub Desc.");
    const std::size_t size = page_size(request, 250), offset = page_offset(request);
    const DateRange range = read_date_range(body, service.now());
    const auto conditions = read_conditions(body);
    const std::string nip = service.authentication_of(request).context.nip();

    std::vector<const Invoice*> found;
    for (const std::string& reference : service.state.invoice_order) {
        const Invoice& invoice = service.state.invoices.at(reference);
        if (invoice.ksef_number.empty() || !takes_part(*invoice.summary, subject, nip)) continue;
        const Instant moment = range.moment_of(invoice);
        const FormCode& form = service.state.sessions.at(invoice.session_reference).form_code;
        if (moment >= range.from && moment <= range.to &&
            std::all_of(conditions.begin(), conditions.end(),
                        [&](const Condition& condition) { return condition(invoice, form); }))
            found.push_back(&invoice);
    }
    std::stable_sort(found.begin(), found.end(), [&](const Invoice* a, const Invoice* b) {
        return range.moment_of(*a) < range.moment_of(*b);
    });
    if (order == "Desc") std::reverse(found.begin(), found.end());
    const bool truncated = found.size() > most_results;
    if (truncated) found.resize(most_results);

    const std::size_t from = std::min(offset * size, found.size()),
                      to = std::min(from + size, found.size());
    Json answer = {{"hasMore", to < found.size() || (truncated && to == found.size())},
                   {"isTruncated", truncated && to == found.size()}};
    if (range.type == "PermanentStorage")
        answer["permanentStorageHwmDate"] = service.time_text(service.now());
    answer["invoices"] = Json::array();
    for (std::size_t i = from; i < to; ++i)
        answer["invoices"].push_back(metadata_json(
            service, *found[i], service.state.sessions.at(found[i]->session_reference).form_code));
    return Answer::json(200, answer);
}

}  // namespace tavrix::sandbox
