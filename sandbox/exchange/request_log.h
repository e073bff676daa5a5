// The last requests, so that a test or a person can see what a client really sent.
#pragma once

#include <deque>
#include <map>
#include <string>

#include "sandbox/basics/clock.h"
#include "sandbox/exchange/exchange.h"

namespace tavrix::sandbox {

/// What stands in Authorization is replaced by the kind of token.
struct LoggedRequest : RequestHead {
    std::uint64_t number = 0;
    Instant time;
    BearerKind bearer = BearerKind::none;
    std::string body;
    /// The body of what was answered, its beginning when it is long.
    std::string answer;
    std::string step;
    std::vector<std::string> faults;
    int status = 0;
    double duration_ms = 0;
};

/// Keeps the newest entries, at most `capacity` of them, with bodies of at most 64 KiB and answers
/// of at most 16 KiB each.
class RequestLog {
  public:
    explicit RequestLog(std::size_t capacity) : capacity_(capacity) {}

    void add(LoggedRequest entry);
    void clear();
    const std::deque<LoggedRequest>& entries() const { return entries_; }
    /// Null for a number that was not given out, or whose entry has been dropped.
    const LoggedRequest* find(std::uint64_t number) const;
    std::uint64_t total() const { return total_; }
    /// Requests by step since the last clear, whatever the log has dropped.
    const std::map<std::string, std::uint64_t>& counts() const { return counts_; }

  private:
    std::size_t capacity_;
    std::deque<LoggedRequest> entries_;
    std::uint64_t total_ = 0;
    std::map<std::string, std::uint64_t> counts_;
};

Json to_json(const LoggedRequest& entry, const TimeFormat& time);

}  // namespace tavrix::sandbox
