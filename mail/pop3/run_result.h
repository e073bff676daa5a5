#pragma once

#include <cstdint>

namespace tavrix::mail::run_result {

// What one connection to the mailbox came to: the number of messages stored, or why there is none.
// A socket's failure is its number, negated; those begin at ten thousand.
inline constexpr std::int32_t stored = 1;
inline constexpr std::int32_t empty = 0;
inline constexpr std::int32_t refused = -1;  // by the server, with a line that says so
inline constexpr std::int32_t timed_out = -2;
inline constexpr std::int32_t date_changed = -3;  // while the exchange went on
inline constexpr std::int32_t not_saved = -4;     // the message stays on the server
inline constexpr std::int32_t cancelled = -5;
inline constexpr std::int32_t not_run =
    -6;  // the form could not be shown, or has shown another run

}  // namespace tavrix::mail::run_result
