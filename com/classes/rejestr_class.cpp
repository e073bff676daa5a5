#include "com/classes/classes.h"

#include "com/classes/compositions.h"
#include "com/dispatch_object.h"
#include "com/guid.h"
#include "com/signature.h"

namespace tavrix::com {
namespace {

using frame::Rejestr;

// DISPIDs are published: append only.
constexpr auto rejestr_members = members(method<&Rejestr::RegGetValue>(
    1, u"RegGetValue",
    u"Wartość z rejestru systemu jako tekst; pusty tekst, gdy jej nie ma albo ma ponad 255 bajtów.",
    by_value(u"MainKey_def"), by_value(u"SubKey"), by_value(u"Value")));

constexpr ClassTable rejestr_table = {
    .class_id = guid("8EC24FA8-89C1-4F8E-941B-A3B2339F5EA4"),
    .interface_id = guid("CD38548A-9090-4CA6-92AF-5F2CA9751927"),
    .name = u"Rejestr",
    .help = u"Tavrix: odczyt rejestru systemu",
    .members = rejestr_members,
};

}  // namespace

constexpr CreatableClass rejestr_class = {
    rejestr_table, [] { return make_object(rejestr_table, compose_rejestr()); }};

}  // namespace tavrix::com
