#include "stand_ins/ado/fields.h"

#include "com/dispatch_object.h"
#include "com/enumerator.h"
#include "com/guid.h"
#include "com/signature.h"
#include "stand_ins/ado/properties.h"

namespace tavrix::ado {
namespace {

using com::by_value;
using com::property;
using com::read_only;

constexpr auto field_members = com::members(
    property<&Field::value, &Field::set_value>(0, u"Value", u"Wartość w bieżącym wierszu."),
    read_only<&Field::name>(1, u"Name", u"Nazwa kolumny."),
    read_only<&Field::type>(2, u"Type", u"Typ kolumny (DataTypeEnum)."),
    read_only<&Field::defined_size>(3, u"DefinedSize", u"Najwięcej znaków albo bajtów."),
    read_only<&Field::properties>(4, u"Properties", u"Właściwości dostawcy."));

constexpr auto fields_members = com::members(
    read_only<&Fields::enumerate>(DISPID_NEWENUM, u"_NewEnum", u"Wyliczenie dla For Each."),
    read_only<&Fields::item>(0, u"Item", u"Kolumna o podanej nazwie albo numerze od 0.",
                             by_value(u"Index")),
    read_only<&Fields::count>(1, u"Count", u"Liczba kolumn."));

}  // namespace

base::Text Field::name() {
    return rows_->rows().columns().at(column_).name;
}

ColumnType Field::described() {
    return type_of(rows_->rows().columns().at(column_), rows_->habits());
}

std::int32_t Field::type() {
    return described().type;
}

std::int32_t Field::defined_size() {
    return described().defined_size;
}

windows::ComPointer<IDispatch> Field::properties() {
    std::vector<Property> properties;
    properties.emplace_back(u"KEYCOLUMN", [rows = rows_, column = column_] {
        return ports::Value(rows->rows().is_key(column));
    });
    return com::make_object(properties_class, std::make_shared<Properties>(std::move(properties)));
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
