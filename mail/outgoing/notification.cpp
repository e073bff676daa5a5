#include "mail/outgoing/notification.h"

#include <algorithm>

namespace tavrix::mail::outgoing {
namespace {

struct Wish {
    base::TextView word;
    std::uint32_t number;
};
constexpr std::uint32_t never = 1;
constexpr std::uint32_t all_wishes = 15;
constexpr Wish wishes[] = {{u"NEVER", never}, {u"SUCCESS", 2}, {u"FAILURE", 4}, {u"DELAY", 8}};

std::uint32_t sum_in(base::TextView options) {
    const bool is_number =
        !options.empty() && options.size() <= 2 &&
        std::ranges::all_of(options, [](char16_t c) { return c >= u'0' && c <= u'9'; });
    if (is_number) {
        std::uint32_t sum = 0;
        for (const char16_t digit : options) sum = sum * 10 + (digit - u'0');
        return sum <= all_wishes ? sum : 0;
    }
    std::uint32_t sum = 0;
    for (const Wish& wish : wishes) {
        if (base::find_case_blind(options, wish.word) != base::TextView::npos) sum |= wish.number;
    }
    return sum;
}

}  // namespace

Notification read_notification(base::TextView options) {
    const base::TextView wanted = base::trim(options);
    if (wanted.find(u'@') != base::TextView::npos) return {{}, base::Text(wanted)};
    const std::uint32_t sum = sum_in(wanted);
    // The standard allows it with no other.
    if ((sum & never) != 0) return {"NEVER", {}};
    Notification notification;
    for (const Wish& wish : wishes) {
        if ((sum & wish.number) == 0) continue;
        if (!notification.notify.empty()) notification.notify += ',';
        notification.notify += base::to_utf8(wish.word);
    }
    return notification;
}

}  // namespace tavrix::mail::outgoing
