#include "ports/portable/sqlite_column.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include "base/error.h"

namespace tavrix::ports {
namespace {

constexpr std::array<std::string_view, 11> number_types = {
    "BIGINT",  "DECIMAL", "FLOAT",    "INT",        "INTEGER", "MONEY",
    "NUMERIC", "REAL",    "SMALLINT", "SMALLMONEY", "TINYINT"};

ColumnKind kind_of(const std::string& type) {
    if (type == "BIT") return ColumnKind::boolean;
    if (std::ranges::find(number_types, type) != number_types.end()) return ColumnKind::number;
    if (type == "DATE" || type == "DATETIME" || type == "DATETIME2" || type == "SMALLDATETIME") {
        return ColumnKind::date;
    }
    if (type == "CHAR" || type == "NCHAR") return ColumnKind::fixed_text;
    if (type.find("CHAR") != std::string::npos || type.find("TEXT") != std::string::npos) {
        return ColumnKind::text;
    }
    return ColumnKind::as_stored;
}

Value number_of(const base::Text& plain) {
    const std::string digits = base::to_utf8(plain);
    std::int64_t whole = 0;
    const char* end = digits.data() + digits.size();
    if (std::from_chars(digits.data(), end, whole).ptr == end) return whole;
    double value = 0;
    std::from_chars(digits.data(), end, value);
    return value;
}

[[noreturn]] void refuse(const SqliteColumn& column, base::TextView words) {
    throw base::AutomationError(base::ErrorNumber::value_refused, u"Database",
                                column.name + u": " + base::Text(words));
}

}  // namespace

SqliteColumn::SqliteColumn(const char* utf8_name, const char* declared)
    : name(base::from_utf8(utf8_name)), declared_type(declared == nullptr ? "" : declared) {
    if (const std::size_t bracket = declared_type.find('('); bracket != std::string::npos) {
        std::from_chars(declared_type.data() + bracket + 1,
                        declared_type.data() + declared_type.size(), length);
        declared_type.erase(bracket);
    }
    while (!declared_type.empty() && declared_type.back() == ' ') declared_type.pop_back();
    for (char& c : declared_type) {
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 32);
    }
    kind = kind_of(declared_type);
    const bool is_text = kind == ColumnKind::text || kind == ColumnKind::fixed_text;
    if (!is_text) length = Recordset::unlimited;
}

Value as_kind(const Value& stored, ColumnKind kind) {
    if (std::holds_alternative<std::monostate>(stored)) return {};
    const auto* number = std::get_if<std::int64_t>(&stored);
    if (kind == ColumnKind::boolean && number != nullptr) return *number != 0;
    if (kind == ColumnKind::date) {
        if (const auto moment = date_of(stored)) return *moment;
    }
    const bool is_text = kind == ColumnKind::text || kind == ColumnKind::fixed_text;
    if (!is_text || std::holds_alternative<base::Bytes>(stored)) return stored;
    base::Text text = text_of(stored);
    while (kind == ColumnKind::fixed_text && text.ends_with(u' ')) text.pop_back();
    return text;
}

Value as_stored(const Value& value) {
    if (const auto* moment = std::get_if<base::DateTime>(&value))
        return base::format_date_time(*moment);
    if (const auto* flag = std::get_if<bool>(&value)) return std::int64_t{*flag ? 1 : 0};
    return value;
}

Value fitting(const Value& value, const SqliteColumn& column) {
    if (std::holds_alternative<std::monostate>(value)) return {};
    const auto* text = std::get_if<base::Text>(&value);
    switch (column.kind) {
        case ColumnKind::number:
            if (text == nullptr) return value;
            if (const auto number = plain_number(*text)) return number_of(*number);
            refuse(column, u"no number");
        case ColumnKind::date:
            if (const auto moment = date_of(value)) return *moment;
            refuse(column, u"no date");
        case ColumnKind::text:
        case ColumnKind::fixed_text: {
            if (std::holds_alternative<base::Bytes>(value)) return value;
            base::Text shown = text_of(value);
            if (shown.size() > column.length && text == nullptr) shown.resize(column.length);
            if (shown.size() > column.length) refuse(column, u"the text is too long");
            return shown;
        }
        default:
            return value;
    }
}

}  // namespace tavrix::ports
