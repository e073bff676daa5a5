#pragma once

#include "base/text.h"
#include "windows/automation.h"

namespace tavrix::ado {

/// What SQL Server gives back as the count of rows that an update has reached.
enum class RowCount {
    one,
    /// SET NOCOUNT ON, on the server or in a trigger.
    none,
};

/// In what servers, providers and users' settings differ, as far as hosts run into it. Chosen in
/// the connection string by the names in quotes.
struct Habits {
    /// "Hidden Keys=no": the provider reads no key columns beside the selected ones, like ODBC's.
    bool hidden_keys = true;
    /// "Row Count=none".
    RowCount row_count = RowCount::one;
    /// "Datetime2=yes": a stored time is compared to seven digits, of which it holds three.
    bool compares_exact_times = false;
    /// "Provider=SQLOLEDB": dates without a time and long times are texts.
    bool shows_new_dates_as_text = false;
    /// "Locale=en" rather than Polish: the user's regional settings.
    LCID locale = 0x0415;
    /// "Deadlocks=1": so many of the next writes fall victim to another's transaction.
    int deadlocks = 0;
    /// "Timeouts=1": so many run into the time-out.
    int timeouts = 0;
    /// "Silent=connect" or "Silent=query": the server never answers what is asked for
    /// asynchronously, and cancelling it takes a while.
    bool never_connects = false;
    bool never_executes = false;
    /// "Silent=rows": the first row is there, the others do not come. Who asks for them without
    /// having them fetched asynchronously waits.
    bool never_fetches = false;
};

/// Something asked for asynchronously that never comes.
class SilentWork {
  public:
    void begin() noexcept {
        begun_ = true;
        cancelled_ = false;
    }
    void cancel() noexcept {
        if (!cancelled_) cancelled_at_ms_ = GetTickCount();
        cancelled_ = true;
    }
    bool is_going_on() const noexcept {
        constexpr DWORD late_ms = 500;
        return begun_ && !(cancelled_ && GetTickCount() - cancelled_at_ms_ > late_ms);
    }

  private:
    bool begun_ = false;
    bool cancelled_ = false;
    DWORD cancelled_at_ms_ = 0;
};

Habits habits_in(base::TextView connection_string);

/// The value of one key of "key=value;key=value", quotes around it removed.
base::Text value_of_key(base::TextView connection_string, base::TextView key);

}  // namespace tavrix::ado
