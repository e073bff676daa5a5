#pragma once

#include <chrono>
#include <optional>
#include <vector>

#include "ports/clock.h"
#include "ports/query_connection.h"

namespace tavrix::dialogs {

/// The rows of a query as texts; nothing for null.
struct QueryResult {
    std::vector<base::Text> columns;
    std::vector<std::vector<std::optional<base::Text>>> rows;
    /// The query has more rows than these.
    bool is_cut = false;
};

/// One query at a time, a moment's work at a time: each on a connection of its own, in a
/// transaction that is rolled back whatever becomes of it, its rows taken into memory up to a limit
/// and the server's locks given back at once.
class QueryRun {
  public:
    static constexpr std::chrono::seconds connecting_limit{20};
    /// Each of the statements before the query.
    static constexpr std::chrono::seconds preparing_limit{10};
    static constexpr std::chrono::seconds running_limit{40};
    /// How long a cancelled query may take to end before its connection is dropped.
    static constexpr std::chrono::seconds stopping_limit{5};
    static constexpr std::size_t row_limit = 2000;
    /// Fewer while nobody knows how large they are, or where they are large.
    static constexpr std::size_t first_rows = 10;
    static constexpr std::size_t rows_at_once = 200;
    static constexpr std::size_t block_limit = std::size_t{1} << 20;
    /// Bytes of all the rows together, their cells and what is in them.
    static constexpr std::size_t memory_limit = std::size_t{32} << 20;

    enum class Outcome { none, connected, rows, cancelled, failed };
    enum class Stage { idle, connecting, setting_up, beginning, running, reading, stopping };

    QueryRun(ports::MakeQueryConnection make, ports::Clock& clock)
        : make_(std::move(make)), clock_(clock) {}
    ~QueryRun();
    QueryRun(const QueryRun&) = delete;
    QueryRun& operator=(const QueryRun&) = delete;

    /// Finds out whether the server lets us in. Only while idle, like `run`.
    void test(const base::SecretText& connection) noexcept;
    /// `sql` is one that refusal_of does not refuse.
    void run(const base::SecretText& connection, base::TextView sql) noexcept;
    /// To be called every few hundredths of a second until the stage is idle.
    void go_on() noexcept;
    void cancel() noexcept;

    Stage stage() const noexcept { return stage_; }
    bool is_busy() const noexcept { return stage_ != Stage::idle; }
    const base::Text& query() const noexcept { return sql_; }
    /// Of the last `test` or `run`, once it is idle again.
    Outcome outcome() const noexcept { return outcome_; }
    /// What went wrong, in Polish, and below it what the provider says, without passwords.
    const base::Text& failure() const noexcept { return failure_; }
    const QueryResult& result() const noexcept { return result_; }

  private:
    void begin(const base::SecretText& connection, base::TextView sql) noexcept;
    template <typename Action>
    void guarded(Action action) noexcept;
    void step();
    void go_on_connecting();
    void go_on_preparing();
    void go_on_running();
    void read_rows();
    void go_on_stopping();
    bool has_ended() noexcept;
    bool begins_to_roll_back() noexcept;
    void let_go(bool ended) noexcept;
    void stop(Outcome outcome) noexcept;
    void fail(base::TextView sentence, base::Text providers_words) noexcept;
    void enter(Stage stage, std::chrono::milliseconds limit);
    bool is_late() const { return clock_.steady_now() >= deadline_; }

    ports::MakeQueryConnection make_;
    ports::Clock& clock_;
    std::unique_ptr<ports::QueryConnection> connection_;
    base::SecretText connection_text_;
    base::Text sql_;
    Stage stage_ = Stage::idle;
    Outcome outcome_ = Outcome::none;
    std::chrono::milliseconds deadline_{0};
    bool in_transaction_ = false;
    std::size_t bytes_read_ = 0;
    std::size_t rows_wanted_ = first_rows;
    base::Text failure_;
    QueryResult result_;
};

}  // namespace tavrix::dialogs
