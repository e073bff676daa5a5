// The pages a person sees in a browser, in Polish: what has arrived, and each invoice to read.
#pragma once

#include "sandbox/exchange/request_log.h"
#include "sandbox/store/model.h"

namespace tavrix::sandbox {

/// Answers `/`, `/sesja/{reference}` and `/faktura/{reference}`; 404 for anything else.
Answer show_page(const State& state, const RequestLog& log, const Request& request);

}  // namespace tavrix::sandbox
