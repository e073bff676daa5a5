#include "stand_ins/cdo/configuration.h"

#include "com/codec.h"
#include "com/dispatch_object.h"
#include "com/guid.h"
#include "com/signature.h"

namespace tavrix::cdo {
namespace {

constexpr auto field_members =
    com::members(com::property<&Field::value, &Field::set_value>(0, u"Value", u"Wartość."));

constexpr auto fields_members = com::members(
    com::read_only<&Fields::item>(0, u"Item", u"Pole o podanej nazwie.", com::by_value(u"Index")),
    com::method<&Fields::Update>(1, u"Update", u"Zatwierdza ustawione pola."));

constexpr auto configuration_members =
    com::members(com::read_only<&Configuration::fields>(0, u"Fields", u"Pola."));

base::Text type_name(VARTYPE type) {
    switch (type) {
        case VT_I2:
            return u"I2";
        case VT_I4:
            return u"I4";
        case VT_BOOL:
            return u"BOOL";
        case VT_BSTR:
            return u"BSTR";
        default:
            return base::to_decimal(type);
    }
}

}  // namespace

void note(const Record& record, base::TextView what, base::TextView value) {
    record->append(what).append(u"=").append(value).append(u"\n");
}

windows::ComPointer<IDispatch> Fields::item(const base::Text& name) {
    return com::make_object(field_class, std::make_shared<Field>(shared_from_this(), name));
}

void Fields::Update() {
    note(record_, u"Update", u"");
    updated_ = set_;
}

void Fields::set(const base::Text& name, const windows::Variant& value) {
    const base::Text text = com::Codec<base::Text>::read(value.get(), 0x0415);
    note(record_, name.substr(name.rfind(u'/') + 1), type_name(value.type()) + u" " + text);
    set_[name] = text;
}

base::Text Fields::text(const base::Text& name) const {
    const auto found = updated_.find(name);
    return found == updated_.end() ? base::Text() : found->second;
}

windows::ComPointer<IDispatch> Configuration::fields() const {
    return com::make_object(fields_class, fields_);
}

constexpr com::ClassTable field_class = {
    .class_id = GUID{},
    .interface_id = com::guid("5B0C7D1E-42C3-4B9D-9B5A-0E6C41F5A2D1"),
    .name = u"Field",
    .help = u"Pole konfiguracji",
    .members = field_members,
};

constexpr com::ClassTable fields_class = {
    .class_id = GUID{},
    .interface_id = com::guid("8E4F9A62-6F1B-4D0E-A6C7-3C5B1D7E9F02"),
    .name = u"Fields",
    .help = u"Pola konfiguracji",
    .members = fields_members,
};

constexpr com::ClassTable configuration_class = {
    .class_id = GUID{},
    .interface_id = com::guid("C1A2E3D4-90B7-4E58-8F6D-52A7C4B3D603"),
    .name = u"Configuration",
    .help = u"Konfiguracja",
    .members = configuration_members,
};

}  // namespace tavrix::cdo
