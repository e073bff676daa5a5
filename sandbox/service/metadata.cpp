#include "sandbox/service/operations.h"

#include <algorithm>

#include "sandbox/basics/crypto.h"
#include "sandbox/basics/text.h"
#include "sandbox/documents/fa3.h"
#include "sandbox/exchange/body.h"
#include "sandbox/service/metadata_filters.h"

namespace tavrix::sandbox {
namespace {

constexpr std::size_t most_results = 10'000;

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
                 {"permanentStorageDate", service.time_text(invoice.stored)},
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

bool takes_part(const InvoiceSummary& summary, const std::string& subject, const std::string& nip) {
    if (subject == "Subject1") return summary.seller.identifier == nip;
    if (subject == "Subject2") return summary.buyer.identifier == nip;
    if (subject == "SubjectAuthorized")
        return summary.authorized && summary.authorized->identifier == nip;
    return std::any_of(summary.third_parties.begin(), summary.third_parties.end(),
                       [&](const Party& party) { return party.identifier.starts_with(nip); });
}

/// The moment up to which the answer is complete. All pages of one query name the same: the first
/// page sets it, and what arrives while a client turns the pages does not move it.
Instant high_water_mark(Service& service, const Context& context, const Json& body, bool first) {
    constexpr std::size_t most_marks = 1000;
    auto& marks = service.state.query_marks;
    const std::string query = sha256_base64(context.type + context.value + dump(body));
    if (const Instant* mark = look_up(marks, query); mark != nullptr && !first) return *mark;
    if (marks.size() >= most_marks) marks.clear();
    return marks[query] = service.now();
}

/// The number of the first result on the page asked for.
std::size_t first_result(const Request& request, std::size_t page_size) {
    const std::string text = request.parameter("pageOffset").value_or("0");
    const auto offset = number_of<std::uint32_t>(text);
    if (!offset) throw invalid_input("Parametr 'pageOffset' ma nieprawidłową wartość.");
    const std::size_t first = *offset * page_size;
    if (first >= most_results)
        throw invalid_input(
            "You cannot retrieve invoices starting from number 10 000 or higher. Please narrow "
            "your filters.");
    return first;
}

}  // namespace

Answer query_metadata(Service& service, Request& request) {
    constexpr std::string_view subjects[] = {"Subject1", "Subject2", "Subject3",
                                             "SubjectAuthorized"};
    const Json body = read_body(request);
    const std::string subject = required_choice(body, "subjectType", subjects);
    const std::string order = request.parameter("sortOrder").value_or("Asc");
    if (order != "Asc" && order != "Desc")
        throw invalid_input("Parametr 'sortOrder' musi mieć wartość Asc lub Desc.");
    const std::size_t size = requested_page_size(request, 250), first = first_result(request, size);
    DateRange range = read_date_range(body, service.now());
    const auto conditions = read_conditions(body);
    const Context& context = service.authentication_of(request).context;
    const std::string nip = context.nip();

    const bool by_storage = range.type == "PermanentStorage";
    Instant complete_to = range.to;
    if (by_storage)
        complete_to = std::min(range.to, high_water_mark(service, context, body, first == 0));
    if (by_storage && range.restricted) {
        if (range.from > complete_to)
            throw bad_request(ErrorCode::outside_data,
                              "Parametr dateRange.from jest późniejszy niż PermanentStorageHwmDate "
                              "przy włączonym restrictToPermanentStorageHwmDate.");
        range.to = complete_to;
    }

    std::vector<const Invoice*> found;
    for (const std::string& reference : service.state.invoice_order) {
        const Invoice& invoice = service.state.invoices.at(reference);
        if (invoice.ksef_number.empty() || !takes_part(*invoice.summary, subject, nip)) continue;
        const FormCode& form = service.state.sessions.at(invoice.session_reference).form_code;
        if (range.admits(invoice) &&
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

    const std::size_t from = std::min(first, found.size()),
                      to = std::min(from + size, found.size());
    Json answer = {{"hasMore", to < found.size() || (truncated && to == found.size())},
                   {"isTruncated", truncated && to == found.size()}};
    if (by_storage) answer["permanentStorageHwmDate"] = service.time_text(complete_to);
    answer["invoices"] = Json::array();
    for (std::size_t i = from; i < to; ++i)
        answer["invoices"].push_back(metadata_json(
            service, *found[i], service.state.sessions.at(found[i]->session_reference).form_code));
    return Answer::json(200, answer);
}

}  // namespace tavrix::sandbox
