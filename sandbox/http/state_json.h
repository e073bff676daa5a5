// The sandbox's memory as JSON, for tests.
#pragma once

#include "sandbox/http/control.h"

namespace tavrix::sandbox {

/// A part of each list, so that an answer stays small whatever the sandbox remembers.
struct StatePage {
    std::size_t number = 0;
    std::size_t size = 100;
};

/// Sessions, invoices, authentications, faults, counters and the request log. No keys, no tokens.
Json state_json(const ControlRoom& room, const StatePage& page);

}  // namespace tavrix::sandbox
