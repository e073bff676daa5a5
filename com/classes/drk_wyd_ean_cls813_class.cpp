#include "com/classes/classes.h"

#include "barcode/surface/ean_cls813.h"
#include "com/classes/barcode_parameters.h"
#include "com/dispatch_object.h"
#include "com/guid.h"
#include "com/signature.h"

namespace tavrix::com {
namespace {

using barcode::Drk_Wyd_Ean_cls813;

// DISPIDs are published: append only.
constexpr auto drk_wyd_ean_cls813_members = members(
    property<&Drk_Wyd_Ean_cls813::wys, &Drk_Wyd_Ean_cls813::set_wys>(
        1, u"wys", u"Wysokość ostatniego kodu w jednostkach powierzchni."),
    property<&Drk_Wyd_Ean_cls813::szer, &Drk_Wyd_Ean_cls813::set_szer>(
        2, u"szer", u"Szerokość ostatniego kodu w jednostkach powierzchni."),
    method<&Drk_Wyd_Ean_cls813::EAN8>(
        3, u"EAN8", u"Znaki czcionki dla 7 cyfr EAN-8; pusty tekst, gdy to nie one.",
        by_value(u"chaine")),
    method<&Drk_Wyd_Ean_cls813::EAN13>(
        4, u"EAN13", u"Znaki czcionki dla 12 cyfr EAN-13; pusty tekst, gdy to nie one.",
        by_value(u"chaine")),
    method<&Drk_Wyd_Ean_cls813::AddOn>(
        5, u"AddOn", u"Znaki czcionki dla dodatku z 2 albo 5 cyfr; pusty tekst, gdy to nie one.",
        by_reference(u"chaine")),
    method<&Drk_Wyd_Ean_cls813::BinaryByte>(6, u"BinaryByte", u"Osiem cyfr dwójkowych bajtu.",
                                            by_value(u"Value")),
    method<&Drk_Wyd_Ean_cls813::RysujEAN>(
        7, u"RysujEAN", u"Rysuje kod w czcionce wybranej na powierzchni.", by_value(u"pict"),
        by_reference(u"EAN_text"), by_value(u"Rozm"), by_value(u"rotate")),
    method<&Drk_Wyd_Ean_cls813::RotatePicture>(
        8, u"RotatePicture", u"Obraca mapę bitową pola o 90, 180 albo 270 stopni.",
        by_value(u"fr_pic"), by_value(u"to_pic"), by_value(u"angle")),
    method<&Drk_Wyd_Ean_cls813::RotateSurface2>(
        9, u"RotateSurface2", u"Obraca powierzchnię o ćwierć obrotu, piksel po pikselu.",
        by_value(u"SourcePicture"), by_value(u"DestPicture"), by_value(u"lngAngle"),
        by_value(u"XDest"), by_value(u"YDest")));

constexpr ClassTable drk_wyd_ean_cls813_table = {
    .class_id = guid("9B7A6587-B867-4216-BE18-6A4D93654BD3"),
    .interface_id = guid("EF8A212B-75EF-4DAF-A367-869CB25AF07D"),
    .name = u"Drk_Wyd_Ean_cls813",
    .help = u"Tavrix: kody EAN-8 i EAN-13",
    .members = drk_wyd_ean_cls813_members,
};

}  // namespace

constexpr CreatableClass drk_wyd_ean_cls813_class = {
    drk_wyd_ean_cls813_table,
    [] { return make_object(drk_wyd_ean_cls813_table, std::make_shared<Drk_Wyd_Ean_cls813>()); }};

}  // namespace tavrix::com
