#include "stand_ins/ado/fields.h"

#include "com/dispatch_object.h"
#include "com/enumerator.h"
#include "com/guid.h"
#include "com/signature.h"

namespace tavrix::ado {
namespace {

using com::by_value;
using com::property;
using com::read_only;

constexpr auto field_members = com::members(
    property<&Field::value, &Field::set_value>(0, u"Value", u"Wartość w bieżącym wierszu."),
    read_only<&Field::name>(1, u"Name", u"Nazwa kolumny."),
    read_only<&Field::type>(2, u"Type", u"Typ kolumny (DataTypeEnum)."));

constexpr auto fields_members = com::members(
    read_only<&Fields::enumerate>(DISPID_NEWENUM, u"_NewEnum", u"Wyliczenie dla For Each."),
    read_only<&Fields::item>(0, u"Item", u"Kolumna o podanej nazwie albo numerze od 0.",
                             by_value(u"Index")),
    read_only<&Fields::count>(1, u"Count", u"Liczba kolumn."));

struct DeclaredType {
    std::string_view name;
    std::int32_t type;
};

// SQL Server's names as they stand in a table's declaration, and ADO's numbers for them.
constexpr DeclaredType declared_types[] = {
    {"BIT", data_type::boolean},           {"INT", data_type::integer},
    {"INTEGER", data_type::integer},       {"SMALLINT", data_type::integer},
    {"TINYINT", data_type::integer},       {"BIGINT", data_type::big_integer},
    {"FLOAT", data_type::double_number},   {"REAL", data_type::double_number},
    {"DECIMAL", data_type::numeric},       {"NUMERIC", data_type::numeric},
    {"MONEY", data_type::currency},        {"DATE", data_type::date},
    {"DATETIME", data_type::date},         {"DATETIME2", data_type::date},
    {"SMALLDATETIME", data_type::date},    {"TEXT", data_type::long_text},
    {"NTEXT", data_type::long_text},       {"IMAGE", data_type::long_binary},
    {"VARBINARY", data_type::long_binary}, {"BLOB", data_type::long_binary},
};

}  // namespace

base::Text Field::name() {
    return rows_->rows().columns().at(column_).name;
}

std::int32_t Field::type() {
    const std::string& declared = rows_->rows().columns().at(column_).declared_type;
    for (const DeclaredType& row : declared_types) {
        if (row.name == declared) return row.type;
    }
    return data_type::text;
}

std::int32_t Fields::count() {
    return static_cast<std::int32_t>(rows_->rows().columns().size());
}

windows::ComPointer<IDispatch> Fields::item(const ports::Value& index) {
    std::size_t column = 0;
    if (const auto* number = std::get_if<std::int64_t>(&index)) {
        if (*number < 0 || *number >= count()) raise(AdoError::item_not_found, u"ADODB.Fields");
        column = static_cast<std::size_t>(*number);
    } else if (const auto* name = std::get_if<base::Text>(&index)) {
        column = rows_->rows().column_index(*name);
    } else {
        raise(AdoError::invalid_argument, u"ADODB.Fields");
    }
    return com::make_object(field_class, std::make_shared<Field>(rows_, column));
}

windows::ComPointer<IUnknown> Fields::enumerate() {
    return com::make_enumerator(
        static_cast<std::size_t>(count()), [rows = rows_](std::size_t column) {
            return windows::Variant(
                com::make_object(field_class, std::make_shared<Field>(rows, column)));
        });
}

constexpr com::ClassTable field_class = {
    .class_id = GUID{},
    .interface_id = com::guid("62E3160C-7BCE-45AE-B631-66CD68CFB4A2"),
    .name = u"Field",
    .help = u"Kolumna",
    .members = field_members,
};

constexpr com::ClassTable fields_class = {
    .class_id = GUID{},
    .interface_id = com::guid("D23FB35F-BE38-4C0A-AB96-2AC17E1BE030"),
    .name = u"Fields",
    .help = u"Kolumny",
    .members = fields_members,
};

}  // namespace tavrix::ado
