#include "ksef/upload_deadline.h"

#include <array>
#include <cstdio>
#include <cstring>

#include "base/date_time.h"

namespace tavrix::ksef {
namespace {

using Seconds = std::chrono::seconds;

Seconds since_1970(const base::DateTime& moment) {
    return Seconds(base::days_from_civil(moment.year, moment.month, moment.day) * 86'400 +
                   moment.hour * 3'600 + moment.minute * 60 + moment.second);
}

// "Sun, 06 Nov 1994 08:49:37 GMT"
std::optional<Seconds> read_http_date(const std::string& text) {
    base::DateTime moment;
    std::array<char, 4> month{};
    if (std::sscanf(text.c_str(), "%*3c, %2d %3s %4d %2d:%2d:%2d GMT", &moment.day, month.data(),
                    &moment.year, &moment.hour, &moment.minute, &moment.second) != 6) {
        return std::nullopt;
    }
    constexpr std::string_view months = "JanFebMarAprMayJunJulAugSepOctNovDec";
    const std::size_t at = months.find(month.data());
    if (at == std::string_view::npos) return std::nullopt;
    moment.month = static_cast<int>(at / 3) + 1;
    return since_1970(moment);
}

// The value of `se` (storage services' signed expiry), UTC: "2026-11-22T09%3A30%3A00Z".
std::optional<Seconds> expiry_of(std::string_view url) {
    std::size_t at = url.find("?se=");
    if (at == std::string_view::npos) at = url.find("&se=");
    if (at == std::string_view::npos) return std::nullopt;
    std::string_view value = url.substr(at + 4);
    value = value.substr(0, value.find_first_of("&#Z"));
    base::Text text = base::from_utf8(value);
    text = base::replace_all(base::replace_all(text, u"%3A", u":"), u"%3a", u":");
    const auto moment = base::parse_date_time(text);
    return moment ? std::optional(since_1970(*moment)) : std::nullopt;
}

}  // namespace

ServiceTime::ServiceTime(ports::Clock& clock, const ports::HttpReply& reply)
    : clock_(clock), read_at_(clock.steady_now()) {
    for (const auto& [name, value] : reply.headers) {
        if (base::equal_case_blind(base::from_utf8(name), u"Date"))
            service_then_ = read_http_date(value);
    }
}

bool ServiceTime::is_in_time(std::string_view url) const {
    const auto expiry = expiry_of(url);
    if (!expiry || !service_then_) return true;
    return *service_then_ + (clock_.steady_now() - read_at_) < *expiry;
}

}  // namespace tavrix::ksef
