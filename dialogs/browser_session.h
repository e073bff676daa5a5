#pragma once

#include "dialogs/connection_text.h"
#include "dialogs/query_run.h"
#include "dialogs/select_only.h"

namespace tavrix::dialogs {

/// What the query browser's window shows and does, without the window: the databases, the query
/// that runs, and the page of its rows that is in sight.
class BrowserSession {
  public:
    static constexpr std::size_t page_size = 200;

    BrowserSession(std::vector<ListedDatabase> databases, ports::MakeQueryConnection make,
                   ports::Clock& clock);

    const std::vector<ListedDatabase>& databases() const noexcept { return databases_; }
    /// False also tells the user to choose one.
    bool has_database(std::size_t database);

    /// Tries to connect with one of the databases.
    void connect(std::size_t database);
    /// Runs a query on it, unless that does more than read: then it says why, and nothing runs.
    std::optional<Refusal> run(std::size_t database, base::TextView sql);
    /// Ends what is under way; false when there was nothing, or it was asked to end before.
    bool stop();
    bool can_stop() const noexcept { return run_.is_busy() && !asked_to_stop_; }
    /// To be called every few hundredths of a second while busy. True when the status or the rows
    /// are new.
    bool go_on();
    bool is_busy() const noexcept { return run_.is_busy(); }

    /// The last query that ran.
    const base::Text& query() const noexcept { return run_.query(); }
    /// What happens, or what came of it.
    const base::Text& status() const noexcept { return status_; }
    const QueryResult& result() const noexcept { return run_.result(); }

    /// The rows in sight: where they begin, and how many they are.
    std::size_t page_start() const noexcept { return page_start_; }
    std::size_t page_rows() const noexcept;
    bool has_next_page() const noexcept { return page_start_ + page_rows() < result().rows.size(); }
    bool has_previous_page() const noexcept { return page_start_ > 0; }
    void show_next_page() noexcept;
    void show_previous_page() noexcept;
    /// "Wiersze 1–200 z 450"; "" without rows.
    base::Text page_text() const;
    /// One cell of the page, in one line; nothing for null or none.
    std::optional<base::Text> cell(std::size_t row, std::size_t column) const;
    /// A row of the page with what is in it, a line for each column. A very long one ends with "…".
    base::Text whole_row(std::size_t row) const;

    /// The name of a column, or its number where it has none.
    base::Text column_title(std::size_t column) const;

  private:
    base::Text outcome_text() const;

    std::vector<ListedDatabase> databases_;
    QueryRun run_;
    std::size_t database_ = 0;
    std::size_t page_start_ = 0;
    bool asked_to_stop_ = false;
    base::Text status_;
};

}  // namespace tavrix::dialogs
