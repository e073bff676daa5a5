#include "sandbox/exchange/rate_limits.h"

#include <algorithm>

#include "sandbox/exchange/refusals.h"

namespace tavrix::sandbox {
namespace {

struct Limits {
    RateGroup group;
    const char* name;
    int per_second, per_minute, per_hour;
};

constexpr int no_limit = 0;

constexpr Limits limits[] = {
    {RateGroup::online_session, "onlineSession", 10, 30, 120},
    {RateGroup::batch_session, "batchSession", 10, 20, 60},
    {RateGroup::invoice_send, "invoiceSend", 10, 30, 180},
    {RateGroup::invoice_status, "invoiceStatus", 30, 120, 1200},
    {RateGroup::session_list, "sessionList", 5, 10, 60},
    {RateGroup::session_invoice_list, "sessionInvoiceList", 10, 20, 200},
    {RateGroup::session_misc, "sessionMisc", 10, 120, 1200},
    {RateGroup::invoice_metadata, "invoiceMetadata", 8, 16, 20},
    {RateGroup::invoice_export, "invoiceExport", 8, 16, 20},
    {RateGroup::invoice_export_status, "invoiceExportStatus", 10, 60, 600},
    {RateGroup::invoice_download, "invoiceDownload", 8, 16, 64},
    {RateGroup::other, "other", 10, 30, 120},
    {RateGroup::authentication, nullptr, 60, no_limit, no_limit},
};

void check_window(const std::deque<Instant>& requests, Instant now, int limit,
                  std::chrono::seconds window, const char* window_name) {
    if (limit == no_limit || requests.size() < std::size_t(limit)) return;
    // The request `limit` places back must have left the window for another one to fit.
    const Instant blocking = requests[requests.size() - std::size_t(limit)];
    const Ticks wait = blocking + window - now;
    if (wait > Ticks(0))
        throw too_many_requests(limit, window_name,
                                int(std::chrono::ceil<std::chrono::seconds>(wait).count()));
}

}  // namespace

Json published_rate_limits() {
    Json all = Json::object();
    for (const Limits& row : limits)
        if (row.name != nullptr)
            all[row.name] = {{"perSecond", row.per_second},
                             {"perMinute", row.per_minute},
                             {"perHour", row.per_hour}};
    return all;
}

void RateLimiter::admit(const std::string& caller, RateGroup group, Instant now) {
    using namespace std::chrono_literals;
    const auto* row = std::find_if(std::begin(limits), std::end(limits),
                                   [group](const Limits& it) { return it.group == group; });
    if (row == std::end(limits)) return;
    auto& requests = requests_[{caller, group}];
    while (!requests.empty() && requests.front() + 1h <= now) requests.pop_front();
    check_window(requests, now, row->per_hour, 1h, "godzinę");
    check_window(requests, now, row->per_minute, 1min, "minutę");
    check_window(requests, now, row->per_second, 1s, "sekundę");
    requests.push_back(now);
}

}  // namespace tavrix::sandbox
