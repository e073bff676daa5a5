#include "barcode/surface/host_arithmetic.h"

#include <limits>

namespace tavrix::barcode {
namespace {

std::int32_t narrow(std::int64_t value) {
    if (value < std::numeric_limits<std::int32_t>::min() ||
        value > std::numeric_limits<std::int32_t>::max()) {
        throw_overflow();
    }
    return static_cast<std::int32_t>(value);
}

}  // namespace

void throw_overflow() {
    throw base::AutomationError(base::ErrorNumber::overflow, u"Tavrix", u"Overflow");
}

std::int32_t checked_multiply_add(std::int32_t factor, std::int32_t other, std::int32_t addend) {
    return narrow(std::int64_t{narrow(std::int64_t{factor} * other)} + addend);
}

bool begins_with_nonzero_number(base::TextView text) noexcept {
    std::size_t i = 0;
    while (i < text.size() && text[i] == u' ') ++i;
    if (i < text.size() && (text[i] == u'-' || text[i] == u'+')) ++i;
    bool point_seen = false;
    for (; i < text.size(); ++i) {
        if (text[i] == u'.' && !point_seen) {
            point_seen = true;
        } else if (text[i] < u'0' || text[i] > u'9') {
            return false;
        } else if (text[i] != u'0') {
            return true;
        }
    }
    return false;
}

}  // namespace tavrix::barcode
