#include "ports/windows/ado_field.h"

#include "base/error.h"
#include "windows/variant_value.h"

namespace tavrix::windows {
namespace {

enum class FieldKind { other, number, date, text, fixed_text, long_text };

struct TypeRow {
    std::int32_t type;  // DataTypeEnum
    FieldKind kind;
};

constexpr TypeRow types[] = {
    {2, FieldKind::number},        // adSmallInt
    {3, FieldKind::number},        // adInteger
    {4, FieldKind::number},        // adSingle
    {5, FieldKind::number},        // adDouble
    {6, FieldKind::number},        // adCurrency
    {7, FieldKind::date},          // adDate
    {8, FieldKind::long_text},     // adBSTR
    {14, FieldKind::number},       // adDecimal
    {16, FieldKind::number},       // adTinyInt
    {17, FieldKind::number},       // adUnsignedTinyInt
    {18, FieldKind::number},       // adUnsignedSmallInt
    {19, FieldKind::number},       // adUnsignedInt
    {20, FieldKind::number},       // adBigInt
    {21, FieldKind::number},       // adUnsignedBigInt
    {129, FieldKind::fixed_text},  // adChar
    {130, FieldKind::fixed_text},  // adWChar
    {131, FieldKind::number},      // adNumeric
    {133, FieldKind::date},        // adDBDate
    {135, FieldKind::date},        // adDBTimeStamp
    {139, FieldKind::number},      // adVarNumeric
    {200, FieldKind::text},        // adVarChar
    {201, FieldKind::long_text},   // adLongVarChar
    {202, FieldKind::text},        // adVarWChar
    {203, FieldKind::long_text},   // adLongVarWChar
};

FieldKind kind_of(const LateBound& field) {
    const ports::Value number = value_of(field.get(u"Type").get());
    for (const TypeRow& row : types) {
        if (number == ports::Value(std::int64_t{row.type})) return row.kind;
    }
    return FieldKind::other;
}

[[noreturn]] void refuse(const LateBound& field, base::TextView words) {
    throw base::AutomationError(
        base::ErrorNumber::value_refused, u"Database",
        ports::text_of(value_of(field.get(u"Name").get())) + u": " + base::Text(words));
}

Variant number_for(const LateBound& field, const base::Text& text) {
    const auto plain = ports::plain_number(text);
    Variant number;
    if (!plain || FAILED(VarDecFromStr(const_cast<wchar_t*>(wide(*plain)), LOCALE_INVARIANT,
                                       LOCALE_NOUSEROVERRIDE, &number.address()->decVal))) {
        refuse(field, u"no number");
    }
    // The type shares its place with the decimal's reserved field.
    number.address()->vt = VT_DECIMAL;
    return number;
}

Variant date_for(const LateBound& field, const base::Text& text) {
    const auto moment = base::parse_date_time(text);
    if (!moment) refuse(field, u"no date");
    return Variant::date(base::to_automation_date(*moment));
}

// A column declared as date or datetime2 is a text to older providers, of the length of what it
// keeps: cut to it, the moment fits.
Variant text_for(const LateBound& field, const ports::Value& value) {
    base::Text text = ports::text_of(value);
    if (std::holds_alternative<base::DateTime>(value)) {
        text.resize(std::min(text.size(), capacity_of(field)));
    }
    return text;
}

}  // namespace

ports::Value value_in(const LateBound& field) {
    ports::Value value = value_of(field.get(u"Value").get());
    if (auto* text = std::get_if<base::Text>(&value);
        text != nullptr && text->ends_with(u' ') && kind_of(field) == FieldKind::fixed_text) {
        text->resize(text->find_last_not_of(u' ') + 1);
    }
    return value;
}

Variant variant_for(const LateBound& field, const ports::Value& value) {
    const auto* text = std::get_if<base::Text>(&value);
    const bool is_bytes = std::holds_alternative<base::Bytes>(value);
    const bool is_null = std::holds_alternative<std::monostate>(value);
    if (is_null || is_bytes) return variant_of(value);
    switch (kind_of(field)) {
        case FieldKind::number:
            return text != nullptr ? number_for(field, *text) : variant_of(value);
        case FieldKind::date:
            return text != nullptr ? date_for(field, *text) : variant_of(value);
        case FieldKind::other:
            return variant_of(value);
        default:
            return text_for(field, value);
    }
}

std::size_t capacity_of(const LateBound& field) {
    const FieldKind kind = kind_of(field);
    if (kind != FieldKind::text && kind != FieldKind::fixed_text)
        return ports::Recordset::unlimited;
    // Providers give half of the largest number, or -1, for a column without a limit.
    constexpr std::int64_t no_limit = 0x3FFFFFFF;
    const ports::Value defined = value_of(field.get(u"DefinedSize").get());
    const auto* size = std::get_if<std::int64_t>(&defined);
    return size == nullptr || *size < 0 || *size >= no_limit ? ports::Recordset::unlimited
                                                             : static_cast<std::size_t>(*size);
}

}  // namespace tavrix::windows
