// The lists of invoices, sessions and requests, whole or narrowed by a search, and the form that
// searches them.
#pragma once

#include <functional>
#include <span>
#include <string>
#include <vector>

#include "sandbox/exchange/request_log.h"
#include "sandbox/pages/html.h"
#include "sandbox/pages/search.h"

namespace tavrix::sandbox {

/// A list and how the entry at an index is shown. What it shows must outlive it.
struct List {
    std::string title;
    /// Of its own page.
    std::string address;
    std::string nothing;
    std::span<const Table::Column> columns;
    std::size_t total;
    std::function<std::vector<std::string>(std::size_t)> cells;
};

List invoice_list(const State& state, const std::vector<std::string>& references);
List session_list(const State& state);
List request_list(const RequestLog& log);

/// The entries at some indexes, ascending, as a list of their own.
List narrowed(List list, std::vector<std::size_t> indexes);

/// The whole list, a part at a time.
std::string list_section(const List& list, const Request& request);
/// Its newest entries, and the way to the others.
std::string newest_section(const List& list);

/// A page of one list, with the form that narrows it.
Answer list_page(const List& list, const Search& search, const Request& request,
                 bool complete = true);

/// \param address of the page that shows what is found.
std::string search_form(const std::string& address, const Search& search);
/// Says that not everything was read; nothing when it was.
std::string incomplete_note(bool complete);

}  // namespace tavrix::sandbox
