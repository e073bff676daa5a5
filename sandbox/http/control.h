// What tests and people use to watch and steer the sandbox: everything under /sandbox/.
#pragma once

#include "sandbox/exchange/rate_limits.h"
#include "sandbox/exchange/request_log.h"
#include "sandbox/service/service.h"

namespace tavrix::sandbox {

/// Everything the sandbox has, for those who may see all of it.
struct ControlRoom {
    Service& service;
    RateLimiter& limiter;
    RequestLog& log;
    /// What the command line said, before anybody changed it.
    const Options& started_with;
};

/// Answers a request under /sandbox/; 400 with `{"error": ...}` for one that makes no sense.
Answer control(ControlRoom& room, Request& request);

}  // namespace tavrix::sandbox
