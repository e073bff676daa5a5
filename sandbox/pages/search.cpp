#include "sandbox/pages/search.h"

#include <algorithm>

#include "sandbox/basics/text.h"
#include "sandbox/pages/html.h"
#include "sandbox/pages/invoice_page.h"
#include "sandbox/pages/polish.h"
#include "sandbox/service/bearer_tokens.h"
#include "sandbox/store/statuses.h"

namespace tavrix::sandbox {
namespace {

constexpr std::size_t longest_query = 200, most_words = 8;
// Nobody else is served meanwhile. Accepted invoices are not read again, only refused ones.
constexpr std::size_t most_document_bytes = 16 * 1024 * 1024;
// Of the body and of the answer of a request.
constexpr std::size_t most_searched_of_a_text = 8 * 1024;

/// A tax number is remembered without the dashes that people write in it.
std::string without_dashes_of_a_nip(const std::string& word) {
    std::string digits = word;
    std::erase(digits, '-');
    const bool nip = digits.size() == 10 && digits.find_first_not_of("0123456789") == digits.npos;
    return nip ? digits : word;
}

class Fields {
  public:
    Fields() { text_.reserve(512); }
    Fields& add(std::string_view field) {
        (text_ += field) += '\n';
        return *this;
    }
    Fields& add(const Status& status) {
        add(std::to_string(status.code) + " " + status.description);
        return status.details.empty() ? *this : add(status.details.front());
    }
    std::string text() && { return std::move(text_); }

  private:
    std::string text_;
};

std::string fields_of(const Invoice& invoice, const Status& status, bool read_document) {
    Fields fields;
    fields.add(invoice.ksef_number).add(invoice.reference).add(invoice.session_reference);
    fields.add(invoice.file_name).add(status);
    if (const auto& summary = invoice.summary) {
        // Without the copies that a heading is made of: there may be very many.
        fields.add(summary->invoice_number).add(summary->buyer.name).add(summary->seller.name);
        fields.add(summary->buyer.identifier).add(summary->seller.identifier);
        fields.add(money_text(summary->gross_amount, summary->currency));
    } else if (read_document) {
        const InvoiceHeading heading = heading_of(invoice);
        fields.add(heading.number).add(heading.buyer).add(heading.amount).add(heading.parties);
    }
    return std::move(fields).text();
}

std::string fields_of(const Session& session) {
    Fields fields;
    fields.add(session.reference).add(session.context.value).add(session.status);
    return std::move(fields).text();
}

std::string fields_of(const LoggedRequest& entry) {
    Fields fields;
    fields.add(entry.method + " " + mask_tokens(entry.target)).add(std::to_string(entry.status));
    fields.add(entry.step);
    for (const std::string& fault : entry.faults) fields.add(fault);
    fields.add(std::string_view(entry.body).substr(0, most_searched_of_a_text));
    fields.add(std::string_view(entry.answer).substr(0, most_searched_of_a_text));
    return std::move(fields).text();
}

}  // namespace

Search::Search(const Request& request)
    : text_(shortened(request.parameter("q").value_or(""), longest_query)) {
    const std::string outcome = request.parameter("stan").value_or("");
    if (outcome == "ok" || outcome == "wait" || outcome == "bad") outcome_ = outcome;
    const std::string folded = search_folded(text_);
    for (std::size_t at = 0; words_.size() < most_words;) {
        at = folded.find_first_not_of(" \t\r\n", at);
        if (at == std::string::npos) break;
        const std::size_t end = std::min(folded.find_first_of(" \t\r\n", at), folded.size());
        words_.push_back(without_dashes_of_a_nip(folded.substr(at, end - at)));
        at = end;
    }
}

std::string Search::query() const {
    std::string query;
    if (!words_.empty()) query = "?q=" + percent_encode(text_);
    if (!outcome_.empty()) query += (query.empty() ? "?stan=" : "&stan=") + outcome_;
    return query;
}

bool Search::finds(std::string_view fields) const {
    const std::string folded = search_folded(fields);
    return std::all_of(words_.begin(), words_.end(), [&](const std::string& word) {
        return folded.find(word) != std::string::npos;
    });
}

Found find_invoices(const State& state, const std::vector<std::string>& references,
                    const Search& search) {
    Found found;
    std::size_t bytes = 0;
    for (std::size_t index = references.size(); index-- > 0;) {
        const Invoice& invoice = state.invoices.at(references[index]);
        const Status waiting =
            invoice.stage == InvoiceStage::finished ? Status() : status_of(invoice);
        const Status& status = invoice.stage == InvoiceStage::finished ? invoice.status : waiting;
        if (!search.wants(outcome_of(status))) continue;
        if (search.asks_for_words()) {
            if (!invoice.summary) bytes += invoice.xml.size();
            const bool read = invoice.summary || bytes <= most_document_bytes;
            found.complete = found.complete && read;
            if (!search.finds(fields_of(invoice, status, read))) continue;
        }
        found.indexes.push_back(index);
    }
    std::reverse(found.indexes.begin(), found.indexes.end());
    return found;
}

Found find_sessions(const State& state, const Search& search) {
    Found found;
    for (std::size_t index = 0; index < state.session_order.size(); ++index) {
        const Session& session = state.sessions.at(state.session_order[index]);
        if (search.wants(outcome_of(session.status)) && search.finds(fields_of(session)))
            found.indexes.push_back(index);
    }
    return found;
}

Found find_requests(const RequestLog& log, const Search& search) {
    Found found;
    for (std::size_t index = 0; index < log.entries().size(); ++index) {
        const LoggedRequest& entry = log.entries()[index];
        if (search.wants(outcome_of(entry)) && search.finds(fields_of(entry)))
            found.indexes.push_back(index);
    }
    return found;
}

std::vector<std::size_t> requests_naming(const RequestLog& log,
                                         const std::vector<std::string>& references) {
    std::vector<std::size_t> indexes;
    for (std::size_t index = 0; index < log.entries().size(); ++index) {
        const LoggedRequest& entry = log.entries()[index];
        const auto names = [&](const std::string& reference) {
            return !reference.empty() && (entry.path.find(reference) != std::string::npos ||
                                          entry.answer.find(reference) != std::string::npos);
        };
        if (std::any_of(references.begin(), references.end(), names)) indexes.push_back(index);
    }
    return indexes;
}

Status status_of(const Invoice& invoice) {
    switch (invoice.stage) {
        case InvoiceStage::accepted:
            return make_status(StatusOf::invoice, 100);
        case InvoiceStage::processing:
            return make_status(StatusOf::invoice, 150);
        case InvoiceStage::finished:
            break;
    }
    return invoice.status;
}

const char* outcome_of(const Status& status) {
    return status.code == 200 ? "ok" : status.code < 200 ? "wait" : "bad";
}

const char* outcome_of(const LoggedRequest& entry) {
    return entry.status < 300 ? "ok" : "bad";
}

}  // namespace tavrix::sandbox
