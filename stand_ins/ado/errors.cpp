#include "stand_ins/ado/errors.h"

#include "com/dispatch_object.h"
#include "com/enumerator.h"
#include "com/guid.h"
#include "com/signature.h"

namespace tavrix::ado {
namespace {

using com::by_value;
using com::method;
using com::read_only;

constexpr auto error_members = com::members(
    read_only<&Error::description>(0, u"Description", u"Opis błędu."),
    read_only<&Error::number>(1, u"Number", u"Numer błędu."),
    read_only<&Error::source>(2, u"Source", u"Obiekt, który zgłosił błąd."),
    read_only<&Error::sql_state>(3, u"SQLState", u"Kod SQL-92."),
    read_only<&Error::native_error>(4, u"NativeError", u"Numer błędu serwera; zawsze 0."));

constexpr auto errors_members = com::members(
    read_only<&Errors::enumerate>(DISPID_NEWENUM, u"_NewEnum", u"Wyliczenie dla For Each."),
    read_only<&Errors::item>(0, u"Item", u"Błąd o podanym numerze, od 0.", by_value(u"Index")),
    read_only<&Errors::count>(1, u"Count", u"Liczba błędów."),
    method<&Errors::clear>(2, u"Clear", u"Usuwa wszystkie błędy."));

}  // namespace

base::Text Error::sql_state() const {
    return error_.number() == base::ErrorNumber::table_not_found ? u"42S02" : u"HY000";
}

windows::ComPointer<IDispatch> Errors::item(std::int32_t index) const {
    if (index < 0 || index >= count()) raise(AdoError::item_not_found, u"ADODB.Errors");
    return com::make_object(error_class, errors_[static_cast<std::size_t>(index)]);
}

windows::ComPointer<IUnknown> Errors::enumerate() const {
    return com::make_enumerator(errors_.size(), [errors = errors_](std::size_t index) {
        return windows::Variant(com::make_object(error_class, errors[index]));
    });
}

constexpr com::ClassTable error_class = {
    .class_id = GUID{},
    .interface_id = com::guid("A8EF5CC9-D891-418F-906B-AC1A5BCFB32B"),
    .name = u"Error",
    .help = u"Błąd połączenia",
    .members = error_members,
};

constexpr com::ClassTable errors_class = {
    .class_id = GUID{},
    .interface_id = com::guid("902CA7FF-B2A0-481F-9DDA-07ADE38BF499"),
    .name = u"Errors",
    .help = u"Błędy połączenia",
    .members = errors_members,
};

}  // namespace tavrix::ado
