#include "com/classes/classes.h"

#include "com/classes/barcode_parameters.h"
#include "com/classes/compositions.h"
#include "com/dispatch_object.h"
#include "com/guid.h"
#include "com/signature.h"

namespace tavrix::com {
namespace {

using barcode::Drk_Wyd_Ean_cls;

// DISPIDs are published: append only.
constexpr auto drk_wyd_ean_cls_members = members(
    property<&Drk_Wyd_Ean_cls::wys, &Drk_Wyd_Ean_cls::set_wys>(
        1, u"wys", u"Wysokość ostatniego kodu w jednostkach powierzchni."),
    property<&Drk_Wyd_Ean_cls::szer, &Drk_Wyd_Ean_cls::set_szer>(
        2, u"szer", u"Szerokość ostatniego kodu w jednostkach powierzchni."),
    method<&Drk_Wyd_Ean_cls::RysujEAN>(
        3, u"RysujEAN", u"Rysuje kod rodzaju Rodzaj albo obraz z pliku.", by_value(u"pict"),
        by_value(u"EAN_text"), by_value(u"stX_Par"), by_value(u"Sty_Par"), by_value(u"maxx_Par"),
        by_value(u"maxy_Par"), by_value(u"Rozm"), by_value(u"Rodzaj"), by_value(u"beznapisów"),
        by_value(u"rotate"), by_value(u"KatalogProgramu"), by_value(u"WindowsDir")),
    method<&Drk_Wyd_Ean_cls::RysujEAN39>(4, u"RysujEAN39", u"Rysuje Code 39.", by_value(u"pict"),
                                         by_value(u"EAN_text"), by_value(u"Rozm"), by_value(u"bn"),
                                         by_value(u"rotate"), by_value(u"KatalogProgramu"),
                                         by_value(u"WindowsDir")),
    method<&Drk_Wyd_Ean_cls::RysujEAN39ex>(5, u"RysujEAN39ex", u"Rysuje rozszerzony Code 39.",
                                           by_value(u"pict"), by_value(u"EAN_text"),
                                           by_value(u"Rozm"), by_value(u"bn"), by_value(u"rotate"),
                                           by_value(u"KatalogProgramu"), by_value(u"WindowsDir")),
    method<&Drk_Wyd_Ean_cls::SetCzcionkę>(
        6, u"SetCzcionkę", u"Wybiera czcionkę, w razie potrzeby ją instaluje.", by_value(u"pict"),
        by_value(u"fnt"), by_value(u"Plik"), by_value(u"silent"), by_value(u"KatalogProgramu"),
        by_value(u"WindowsDir")),
    method<&Drk_Wyd_Ean_cls::SyncShell>(
        7, u"SyncShell", u"Uruchamia program i czeka na jego koniec.", by_value(u"CommandLine"),
        by_value(u"Timeout_NIE_UZYWANE"), by_value(u"WaitForInputIdle_NIE_UZYWANE"),
        by_value(u"Hide")),
    method<&Drk_Wyd_Ean_cls::RotateText>(8, u"RotateText", u"Pisze tekst obrócony o podany kąt.",
                                         by_value(u"Pdevice"), by_value(u"Text"),
                                         by_value(u"angle"), by_value(u"X"), by_value(u"Y")),
    method<&Drk_Wyd_Ean_cls::RotateSurface>(
        9, u"RotateSurface", u"Obraca powierzchnię o ćwierć obrotu, piksel po pikselu.",
        by_value(u"SourcePicture"), by_value(u"DestPicture"), by_value(u"lngAngle"),
        by_value(u"XDest"), by_value(u"YDest")));

constexpr ClassTable drk_wyd_ean_cls_table = {
    .class_id = guid("D1320870-9CBC-441C-A42D-1436BFA331C2"),
    .interface_id = guid("CBD3E482-754C-48F5-B716-E2668DB60EC8"),
    .name = u"Drk_Wyd_Ean_cls",
    .help = u"Tavrix: kody kreskowe i QR wszystkich rodzajów",
    .members = drk_wyd_ean_cls_members,
};

}  // namespace

constexpr CreatableClass drk_wyd_ean_cls_class = {
    drk_wyd_ean_cls_table, [] { return make_object(drk_wyd_ean_cls_table, compose_ean_cls()); }};

}  // namespace tavrix::com
