// The sandbox's memory as JSON, for tests.
#pragma once

#include "sandbox/http/control.h"

namespace tavrix::sandbox {

/// Sessions, invoices, authentications, faults, counters and the request log. No keys, no tokens.
Json state_json(const ControlRoom& room);

}  // namespace tavrix::sandbox
