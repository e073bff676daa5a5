#include <cstdio>

#include "ports/database.h"

namespace tavrix::ports {
namespace {

struct AsText {
    base::Text operator()(std::monostate) const { return {}; }
    base::Text operator()(bool value) const { return value ? u"True" : u"False"; }
    base::Text operator()(std::int64_t value) const { return base::to_decimal(value); }
    base::Text operator()(double value) const {
        char buffer[40];
        std::snprintf(buffer, sizeof buffer, "%.15g", value);
        return base::from_utf8(buffer);
    }
    base::Text operator()(const base::DateTime& value) const {
        const bool midnight = value.hour == 0 && value.minute == 0 && value.second == 0;
        return midnight ? base::format_date(value) : base::format_date_time(value);
    }
    base::Text operator()(const base::Text& value) const { return value; }
    base::Text operator()(const base::Bytes& value) const {
        base::Text text;
        for (std::size_t i = 0; i + 1 < value.size(); i += 2) {
            text += static_cast<char16_t>(value[i] | (value[i + 1] << 8));
        }
        return text;
    }
};

struct AsDate {
    std::optional<base::DateTime> operator()(const base::DateTime& value) const { return value; }
    std::optional<base::DateTime> operator()(const base::Text& value) const {
        return base::parse_date_time(value);
    }
    std::optional<base::DateTime> operator()(double value) const {
        // The range of an automation DATE: the years 100 to 9999.
        if (!(value >= -657434.0 && value < 2958466.0)) return std::nullopt;
        return base::from_automation_date(value);
    }
    std::optional<base::DateTime> operator()(std::int64_t value) const {
        return (*this)(static_cast<double>(value));
    }
    std::optional<base::DateTime> operator()(auto&&) const { return std::nullopt; }
};

}  // namespace

base::Text text_of(const Value& value) {
    return std::visit(AsText{}, value);
}

std::optional<base::DateTime> date_of(const Value& value) {
    return std::visit(AsDate{}, value);
}

std::optional<base::Text> plain_number(base::TextView text) {
    base::Text number(base::trim(text));
    bool has_digits = false;
    bool has_mark = false;
    for (std::size_t i = 0; i < number.size(); ++i) {
        char16_t& c = number[i];
        if (c >= u'0' && c <= u'9') {
            has_digits = true;
        } else if ((c == u',' || c == u'.') && !has_mark) {
            has_mark = true;
            c = u'.';
        } else if (i > 0 || c != u'-') {
            return std::nullopt;
        }
    }
    if (!has_digits) return std::nullopt;
    return number;
}

}  // namespace tavrix::ports
