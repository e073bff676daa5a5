#include "com/classes/classes.h"

#include "com/classes/barcode_parameters.h"
#include "com/classes/compositions.h"
#include "com/dispatch_object.h"
#include "com/guid.h"
#include "com/signature.h"

namespace tavrix::com {
namespace {

using barcode::Drk_Wyd_Ean_cls128;

// DISPIDs are published: append only.
constexpr auto drk_wyd_ean_cls128_members = members(
    method<&Drk_Wyd_Ean_cls128::Code128_Str>(1, u"Code128_Str", u"Znaki czcionki symbolu Code 128.",
                                             by_value(u"Str")),
    method<&Drk_Wyd_Ean_cls128::Code128_GetWidth>(
        2, u"Code128_GetWidth", u"Szerokość symbolu dla podanej szerokości modułu.",
        by_value(u"Str"), by_value(u"BarWidth")),
    method<&Drk_Wyd_Ean_cls128::RysujEAN>(
        3, u"RysujEAN", u"Rysuje kod w czcionce wybranej na powierzchni, z podpisem albo bez.",
        by_value(u"pict"), by_reference(u"EAN_text"), by_value(u"Rozm"), by_value(u"bn"),
        by_value(u"rotate")));

constexpr ClassTable drk_wyd_ean_cls128_table = {
    .class_id = guid("4228D013-F714-49B1-A882-DF8A521704C0"),
    .interface_id = guid("D62FDE4F-2802-40FC-832C-8D2CF0F98D5B"),
    .name = u"Drk_Wyd_Ean_cls128",
    .help = u"Tavrix: kod Code 128",
    .members = drk_wyd_ean_cls128_members,
};

}  // namespace

constexpr CreatableClass drk_wyd_ean_cls128_class = {
    drk_wyd_ean_cls128_table,
    [] { return make_object(drk_wyd_ean_cls128_table, compose_ean_cls128()); }};

}  // namespace tavrix::com
