// Time as the service sees it: 100-nanosecond steps, a clock that tests can move, and the texts of
// moments.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tavrix::sandbox {

using Ticks = std::chrono::duration<std::int64_t, std::ratio<1, 10'000'000>>;
using Instant = std::chrono::time_point<std::chrono::system_clock, Ticks>;

/// Where the sandbox takes the time from. Calls may come from any thread.
class Clock {
  public:
    /// The computer's clock.
    Clock() = default;
    /// Stands still until advanced; for tests.
    explicit Clock(Instant start) : start_(start) {}

    Instant now() const;
    /// Moves the clock forward; a negative step is refused by the callers.
    void advance(Ticks step) { advanced_ += step.count(); }

  private:
    std::optional<Instant> start_;
    std::atomic<Ticks::rep> advanced_{0};
};

/// How the service prints a moment. It writes up to seven fraction digits and drops the zeros at
/// their end, so a whole second has no fraction at all.
struct TimeFormat {
    int fraction_digits = 7;
    bool trim_zeros = true;

    /// `2026-11-21T08:15:30.1234567+00:00`
    std::string text(Instant moment) const;
    /// The moment with what the text cannot carry cut off.
    Instant truncate(Instant moment) const;
    /// The least difference that two texts show.
    Ticks unit() const;
};

/// `2026-11-21T09:15:30.123+01:00`, Polish local time, as confirmations print it.
std::string polish_time_text(Instant moment);
/// `2026-11-21`, the Polish calendar day of a moment.
std::string polish_date_text(Instant moment);
/// `20261121`, the same day without hyphens.
std::string polish_compact_date(Instant moment);

std::int64_t unix_ms(Instant moment);

/// Reads an ISO 8601 date with an optional time, fraction and offset; no offset means UTC.
std::optional<Instant> parse_instant(std::string_view text);
/// The same; no offset means Polish local time. The hour that comes twice is read as winter time.
std::optional<Instant> parse_polish_instant(std::string_view text);

/// True when a moment is at most that many calendar months after another, counted in UTC or in
/// Polish local time, whichever allows more.
bool within_months(Instant from, Instant to, int months);

}  // namespace tavrix::sandbox
