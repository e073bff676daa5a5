#include "stand_ins/ado/column_type.h"

#include "stand_ins/ado/ado_numbers.h"
#include "windows/variant_value.h"

namespace tavrix::ado {
namespace {

constexpr base::TextView field_source = u"ADODB.Field";
constexpr std::int32_t no_limit = 0x3FFFFFFF;
constexpr std::int32_t no_byte_limit = 0x7FFFFFFF;

struct DeclaredType {
    std::string_view name;
    ColumnType type;
};

// SQL Server's names as they stand in a table's declaration, and what ADO makes of them. Texts
// declared without a length are those of any length.
constexpr DeclaredType declared_types[] = {
    {"BIT", {data_type::boolean, 2, VT_BOOL}},
    {"TINYINT", {data_type::tiny_integer, 1, VT_UI1}},
    {"SMALLINT", {data_type::small_integer, 2, VT_I2}},
    {"INT", {data_type::integer, 4, VT_I4}},
    {"INTEGER", {data_type::integer, 4, VT_I4}},
    {"BIGINT", {data_type::big_integer, 8, VT_I8}},
    {"REAL", {data_type::single_number, 4, VT_R4}},
    {"FLOAT", {data_type::double_number, 8, VT_R8}},
    {"DECIMAL", {data_type::numeric, 19, VT_DECIMAL}},
    {"NUMERIC", {data_type::numeric, 19, VT_DECIMAL}},
    {"MONEY", {data_type::currency, 8, VT_CY}},
    {"SMALLMONEY", {data_type::currency, 8, VT_CY}},
    {"DATE", {data_type::date, 16, VT_DATE}},
    {"DATETIME", {data_type::date, 16, VT_DATE}},
    {"DATETIME2", {data_type::date, 16, VT_DATE}},
    {"SMALLDATETIME", {data_type::date, 16, VT_DATE}},
    {"UNIQUEIDENTIFIER", {data_type::guid, 16, VT_BSTR}},
    {"ROWVERSION", {data_type::binary, 8, VT_EMPTY}},
    {"CHAR", {data_type::ansi_char, 1, VT_BSTR}},
    {"NCHAR", {data_type::wide_char, 1, VT_BSTR}},
    {"VARCHAR", {data_type::long_ansi, no_byte_limit, VT_BSTR, true}},
    {"NVARCHAR", {data_type::long_text, no_limit, VT_BSTR, true}},
    {"TEXT", {data_type::long_ansi, no_byte_limit, VT_BSTR, true}},
    {"NTEXT", {data_type::long_text, no_limit, VT_BSTR, true}},
    {"IMAGE", {data_type::long_binary, no_byte_limit, VT_EMPTY, true}},
    {"VARBINARY", {data_type::long_binary, no_byte_limit, VT_EMPTY, true}},
    {"BLOB", {data_type::long_binary, no_byte_limit, VT_EMPTY, true}},
};

// What a provider of before their time makes of the newer types: the text of a literal.
constexpr DeclaredType new_dates[] = {
    {"DATE", {data_type::text, 10, VT_BSTR}},
    {"DATETIME2", {data_type::text, 27, VT_BSTR}},
};

bool is_of_fixed_length(const ColumnType& type) {
    return type.type == data_type::ansi_char || type.type == data_type::wide_char;
}

// False when the system cannot turn the value into the type.
bool change(windows::Variant& value, VARTYPE type, LCID locale) {
    return SUCCEEDED(
        VariantChangeTypeEx(value.address(), value.address(), locale, VARIANT_ALPHABOOL, type));
}

}  // namespace

ColumnType type_of(const ports::SqliteColumn& column, const Habits& habits) {
    if (habits.shows_new_dates_as_text) {
        for (const DeclaredType& row : new_dates) {
            if (row.name == column.declared_type) return row.type;
        }
    }
    ColumnType found = {data_type::text, 4000, VT_EMPTY};
    for (const DeclaredType& row : declared_types) {
        if (row.name == column.declared_type) found = row.type;
    }
    if (column.length == ports::Recordset::unlimited) return found;
    // "varchar(10)" and "varchar(max)" are different types to ADO.
    if (found.type == data_type::long_ansi) found.type = data_type::ansi_text;
    if (found.type == data_type::long_text) found.type = data_type::text;
    found.defined_size = static_cast<std::int32_t>(column.length);
    found.is_long = false;
    return found;
}

windows::Variant shown(const ports::Value& value, const ports::SqliteColumn& column,
                       const Habits& habits) {
    windows::Variant variant = windows::variant_of(value);
    if (variant.type() == VT_NULL) return variant;
    const ColumnType type = type_of(column, habits);
    if (type.variant == VT_BSTR) {
        base::Text text = ports::text_of(value);
        const auto size = static_cast<std::size_t>(type.defined_size);
        if (is_of_fixed_length(type) && text.size() < size) text.resize(size, u' ');
        return text;
    }
    if (type.variant != VT_EMPTY) change(variant, type.variant, LOCALE_INVARIANT);
    return variant;
}

ports::Value taken(const ports::Value& value, const ports::SqliteColumn& column,
                   const Habits& habits) {
    const ColumnType type = type_of(column, habits);
    windows::Variant variant = windows::variant_of(value);
    if (variant.type() == VT_NULL || type.variant == VT_EMPTY) return value;
    if (!change(variant, type.variant, habits.locale)) raise(AdoError::type_mismatch, field_source);
    ports::Value result = windows::value_of(variant.get());
    if (const auto* text = std::get_if<base::Text>(&result);
        text != nullptr && text->size() > static_cast<std::size_t>(type.defined_size)) {
        raise(AdoError::multiple_step, field_source);
    }
    return result;
}

}  // namespace tavrix::ado
