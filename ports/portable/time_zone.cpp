#include "ports/portable/time_zone.h"

#include <ctime>

namespace tavrix::ports {

std::chrono::minutes utc_offset_at(const base::DateTime& local) {
    std::tm fields{};
    fields.tm_year = local.year - 1900;
    fields.tm_mon = local.month - 1;
    fields.tm_mday = local.day;
    fields.tm_hour = local.hour;
    fields.tm_min = local.minute;
    fields.tm_sec = local.second;
    // The system is to find out about summer time.
    fields.tm_isdst = -1;
    const std::time_t utc = std::mktime(&fields);
    if (utc == -1) return {};
    const std::int64_t as_utc = base::days_from_civil(local.year, local.month, local.day) * 86'400 +
                                local.hour * 3600 + local.minute * 60 + local.second;
    return std::chrono::duration_cast<std::chrono::minutes>(std::chrono::seconds(as_utc - utc));
}

}  // namespace tavrix::ports
