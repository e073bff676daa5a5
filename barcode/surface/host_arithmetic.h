#pragma once

#include <cstdint>

#include "base/error.h"

namespace tavrix::barcode {

// What the hosts' own arithmetic and reading of numbers do.

/// Throws the hosts' overflow error (6).
[[noreturn]] void throw_overflow();

/// `factor` * `other` + `addend`; throws the overflow error when a step leaves 32 bits.
std::int32_t checked_multiply_add(std::int32_t factor, std::int32_t other, std::int32_t addend);

/// Does `action` and passes over whatever goes wrong, memory that a host's object has not got
/// included: the hosts' "on error resume next", fit for destructors.
void attempt(auto&& action) noexcept {
    try {
        action();
    } catch (...) {
    }
}

/// False when the number that `text` begins with, after any spaces, is zero or is not there.
bool begins_with_nonzero_number(base::TextView text) noexcept;

}  // namespace tavrix::barcode
