#include "stand_ins/ado/properties.h"

#include "com/dispatch_object.h"
#include "com/guid.h"
#include "com/signature.h"
#include "stand_ins/ado/ado_numbers.h"

namespace tavrix::ado {
namespace {

using com::by_value;
using com::property;
using com::read_only;

constexpr auto property_members =
    com::members(property<&Property::value, &Property::set_value>(0, u"Value", u"Wartość."),
                 read_only<&Property::name>(1, u"Name", u"Nazwa."));

constexpr auto properties_members = com::members(
    read_only<&Properties::item>(0, u"Item", u"Właściwość o podanej nazwie albo numerze od 0.",
                                 by_value(u"Index")),
    read_only<&Properties::count>(1, u"Count", u"Liczba właściwości."));

}  // namespace

void Property::set_value(const ports::Value& value) {
    if (!let_) raise(AdoError::illegal_operation, u"ADODB.Property");
    let_(value);
}

windows::ComPointer<IDispatch> Properties::item(const ports::Value& index) const {
    const auto* number = std::get_if<std::int64_t>(&index);
    const auto* name = std::get_if<base::Text>(&index);
    for (std::size_t i = 0; i < properties_.size(); ++i) {
        if ((number != nullptr && *number == static_cast<std::int64_t>(i)) ||
            (name != nullptr && base::equal_case_blind(properties_[i].name(), *name))) {
            return com::make_object(property_class, std::make_shared<Property>(properties_[i]));
        }
    }
    raise(AdoError::item_not_found, u"ADODB.Properties");
}

constexpr com::ClassTable property_class = {
    .class_id = GUID{},
    .interface_id = com::guid("7F5E9C0B-0E51-4B43-9F0E-6D1E4B7C3A11"),
    .name = u"Property",
    .help = u"Właściwość dostawcy",
    .members = property_members,
};

constexpr com::ClassTable properties_class = {
    .class_id = GUID{},
    .interface_id = com::guid("2C7A64D2-5B0F-4E0C-8D33-94C1B1B7E5F2"),
    .name = u"Properties",
    .help = u"Właściwości dostawcy",
    .members = properties_members,
};

}  // namespace tavrix::ado
