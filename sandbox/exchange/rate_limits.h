// The published limits of requests per context and address. Source: `x-rate-limits` and the table
// under each operation's answer 429 in the contract.
#pragma once

#include <deque>
#include <map>
#include <string>
#include <utility>

#include "sandbox/basics/clock.h"
#include "sandbox/basics/json.h"

namespace tavrix::sandbox {

enum class RateGroup {
    online_session,
    batch_session,
    invoice_send,
    invoice_status,
    session_list,
    session_invoice_list,
    session_misc,
    invoice_metadata,
    invoice_export,
    invoice_export_status,
    invoice_download,
    other,
    authentication,  // not listed by /rate-limits
    unlimited,
};

/// The answer of /rate-limits.
Json published_rate_limits();

/// Counts requests in sliding windows of a second, a minute and an hour.
class RateLimiter {
  public:
    /// Counts one request of a caller, or throws a refusal and counts nothing.
    void admit(const std::string& caller, RateGroup group, Instant now);
    void clear() { requests_.clear(); }

  private:
    std::map<std::pair<std::string, RateGroup>, std::deque<Instant>> requests_;
};

}  // namespace tavrix::sandbox
