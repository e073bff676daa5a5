#include "windows/variant_value.h"

#include <cmath>
#include <limits>

namespace tavrix::windows {
namespace {

template <typename Number>
base::Value integer(Number number) {
    return static_cast<std::int64_t>(number);
}

// Exact only below 2^53, which is far more than any key or amount needs.
base::Value number(double value) {
    constexpr double exact_limit = 9007199254740992.0;
    if (std::trunc(value) == value && std::fabs(value) < exact_limit) {
        return static_cast<std::int64_t>(value);
    }
    return value;
}

base::Value decimal(VARIANT variant) {
    LONG64 whole = 0;
    // Rounds, so only a decimal without a fraction may take this way.
    if (variant.decVal.scale == 0 && SUCCEEDED(VarI8FromDec(&variant.decVal, &whole))) {
        return integer(whole);
    }
    double value = 0;
    VarR8FromDec(&variant.decVal, &value);
    return number(value);
}

struct ToVariant {
    Variant operator()(std::monostate) const { return Variant::null(); }
    Variant operator()(std::int64_t value) const {
        if (value >= std::numeric_limits<std::int32_t>::min() &&
            value <= std::numeric_limits<std::int32_t>::max()) {
            return Variant(static_cast<std::int32_t>(value));
        }
        Variant variant;
        VarDecFromI8(value, &variant.address()->decVal);
        variant.address()->vt = VT_DECIMAL;
        return variant;
    }
    Variant operator()(const base::DateTime& value) const {
        return Variant::date(base::to_automation_date(value));
    }
    Variant operator()(const auto& value) const { return Variant(value); }
};

}  // namespace

base::Value value_of(const VARIANT& variant) {
    const VARIANT seen = look_through(variant);
    switch (seen.vt) {
        case VT_BOOL:
            return seen.boolVal != VARIANT_FALSE;
        case VT_I1:
            return integer(seen.cVal);
        case VT_UI1:
            return integer(seen.bVal);
        case VT_I2:
            return integer(seen.iVal);
        case VT_UI2:
            return integer(seen.uiVal);
        case VT_I4:
        case VT_INT:
            return integer(seen.lVal);
        case VT_UI4:
        case VT_UINT:
            return integer(seen.ulVal);
        case VT_I8:
            return integer(seen.llVal);
        case VT_UI8:
            return integer(seen.ullVal);
        case VT_R4:
            return static_cast<double>(seen.fltVal);
        case VT_R8:
            return seen.dblVal;
        case VT_CY:
            return number(static_cast<double>(seen.cyVal.int64) / 10000.0);
        case VT_DECIMAL:
            return decimal(seen);
        case VT_DATE:
            return base::from_automation_date(seen.date);
        case VT_BSTR:
            return base::Text(view_of(seen.bstrVal));
        case VT_ARRAY | VT_UI1:
            if (is_byte_array(seen.parray)) return bytes_of(seen.parray);
            return {};
        default:
            return {};
    }
}

Variant variant_of(const base::Value& value) {
    return std::visit(ToVariant{}, value);
}

}  // namespace tavrix::windows
