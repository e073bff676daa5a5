// Finding records by what a person types. Everything remembered is looked through, so the work is
// linear; documents that nobody has read yet are read up to a bound.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "sandbox/exchange/request_log.h"
#include "sandbox/store/model.h"

namespace tavrix::sandbox {

/// What a search asks for, as it stands in the query string: `q` and `stan`.
class Search {
  public:
    explicit Search(const Request& request);

    /// False when every record would be found.
    bool narrows() const { return !words_.empty() || !outcome_.empty(); }
    const std::string& text() const { return text_; }
    /// `ok`, `wait`, `bad`, or empty for any.
    const std::string& outcome() const { return outcome_; }
    /// `?q=...&stan=...`, for the address of what was found.
    std::string query() const;

    bool wants(std::string_view outcome) const { return outcome_.empty() || outcome == outcome_; }
    bool asks_for_words() const { return !words_.empty(); }
    /// True when the fields of a record hold every word, in any order, letters folded.
    bool finds(std::string_view fields) const;

  private:
    std::string text_, outcome_;
    std::vector<std::string> words_;
};

/// Indexes into what was searched, ascending.
struct Found {
    std::vector<std::size_t> indexes;
    /// False when the oldest refused documents were not read.
    bool complete = true;
};
/// \param references of invoices, oldest first.
Found find_invoices(const State& state, const std::vector<std::string>& references,
                    const Search& search);
Found find_sessions(const State& state, const Search& search);
Found find_requests(const RequestLog& log, const Search& search);

/// The requests that name one of some references in their path or were answered with it.
std::vector<std::size_t> requests_naming(const RequestLog& log,
                                         const std::vector<std::string>& references);

/// What an invoice would be told now. Looking at a page counts as no question.
Status status_of(const Invoice& invoice);
/// The outcome of a status or of a request: `ok`, `wait` or `bad`, also the names of its colours.
const char* outcome_of(const Status& status);
const char* outcome_of(const LoggedRequest& entry);

}  // namespace tavrix::sandbox
