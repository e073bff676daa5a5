// The pages a person sees in a browser, in Polish: what has arrived, each invoice to read, and how
// the sandbox is set.
#pragma once

#include "sandbox/exchange/request_log.h"
#include "sandbox/service/service.h"

namespace tavrix::sandbox {

/// What the pages show.
struct PageRoom {
    Service& service;
    const RequestLog& log;
    /// Whether a fault may name a step.
    bool (*is_step)(std::string_view name);
};

/// Answers everything that is neither an operation nor under /sandbox/; 404 for what is no page.
Answer show_page(PageRoom& room, const Request& request);

}  // namespace tavrix::sandbox
