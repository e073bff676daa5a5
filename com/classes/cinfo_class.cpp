#include "com/classes/classes.h"

#include "com/classes/compositions.h"
#include "com/classes/host_parameters.h"
#include "com/dispatch_object.h"
#include "com/guid.h"
#include "com/signature.h"

namespace tavrix::com {
namespace {

using frame::CInfo;

// DISPIDs are published: append only.
constexpr auto cinfo_members = members(
    method<&CInfo::VersjaLib>(1, u"VersjaLib", u"Wersja i nazwa biblioteki: 10.0.36.Tavrix."),
    method<&CInfo::OProgramie>(2, u"OProgramie", u"Pokazuje okno informacji o bibliotece."),
    method<&CInfo::sendmail>(
        3, u"sendmail",
        u"Pokazuje formularz wiadomości do pomocy technicznej; wynik 1, gdy poszła.",
        by_value(u"Par_Source"), by_value(u"Par_nip"), by_value(u"Par_Wersja"), by_value(u"txt1"),
        by_value(u"txt2"), by_value(u"txt3"), by_reference(u"Pliki"), by_reference(u"MailDO2")),
    method<&CInfo::SendMail_dowolny>(
        4, u"SendMail_dowolny",
        u"Pokazuje formularz wiadomości do dowolnych adresatów; wynik 1, gdy poszła.",
        by_reference(u"MailOD"), by_reference(u"MailDo"), by_reference(u"MailTemat"),
        by_value(u"txt1"), by_value(u"txt2"), by_value(u"txt3"), by_reference(u"Plik"),
        by_reference(u"Par_nip"), by_reference(u"Auto")),
    method<&CInfo::Wykres>(5, u"Wykres",
                           u"Pokazuje wykres liczb z tabeli programu: słupkowy, liniowy lub "
                           u"kołowy; opcje to suma 1 (legenda), 2 (wartości) i 4 (linie siatki).",
                           by_reference(u"Par_Czy_Pełny_Ekran"),
                           by_reference(u"Par_I_wykresy_Flex"), by_reference(u"Par_I_wykresy_Col"),
                           by_reference(u"Par_I_wykresy_Str"), by_reference(u"PAr_I_wykresy_X1"),
                           by_reference(u"X2"), by_reference(u"X3"),
                           by_reference(u"PAr_I_wykresy_Title"), by_value(u"PAr_I_wykresy_rodzaj"),
                           by_value(u"PAr_I_wykresy_checks"), by_value(u"PAr_I_wykresy_options")),
    method<&CInfo::Informator>(
        6, u"Informator",
        u"Pokazuje komunikat z przyciskami; wynik 0 dla Prz0 do 12 dla Prz12, bez wyboru -1.",
        by_value(u"Nagłówek"), by_value(u"Treść"), by_value(u"Prz0"), by_value(u"Prz1"),
        by_value(u"Prz2"), by_value(u"Prz3"), by_value(u"Prz4"), by_value(u"Prz5"),
        by_value(u"Prz6"), by_value(u"Prz7"), by_value(u"Prz8"), by_value(u"Prz9"),
        by_value(u"Prz10"), by_value(u"Prz11"), by_value(u"Prz12")),
    method<&CInfo::Informator_Zamówień>(
        7, u"Informator_Zamówień",
        u"To samo dla zamówień, z wartością do zmiany i wyborem jednego z Ile_wyj wyjść (0 dla "
        u"Przyc0 do 4 dla Przyc4); wynik 1 dla Prz1 do 9 dla Prz9, bez wyboru -1 i argumenty bez "
        u"zmian.",
        by_reference(u"REF_Informator_Value_Zamówień"),
        by_reference(u"REF_Informator_Value_Zamówień_WYJ"), by_value(u"Ile_wyj"),
        by_value(u"Nagłówek"), by_value(u"Treść"), by_value(u"Prz1"), by_value(u"Prz2"),
        by_value(u"Prz3"), by_value(u"Prz4"), by_value(u"Prz5"), by_value(u"Prz6"),
        by_value(u"Prz7"), by_value(u"Prz8"), by_value(u"Prz9"), by_value(u"Przyc0"),
        by_value(u"Przyc1"), by_value(u"Przyc2"), by_value(u"Przyc3"), by_value(u"Przyc4")),
    method<&CInfo::Browse>(
        8, u"Browse", u"Pokazuje okno baz danych i zapytań; True, gdy wybrano bazę.",
        by_value(u"Ile_baz"), by_reference(u"Bazy"), by_reference(u"ConnectionStr1"),
        by_reference(u"ConnectionStr2"), by_reference(u"Server")),
    method<&CInfo::SendMailCDO>(
        9, u"SendMailCDO", u"Wysyła wiadomość bez okna; pusty tekst, gdy poszła.",
        by_reference(u"sTo"), by_reference(u"sSubject"), by_reference(u"sFrom"),
        by_reference(u"sBody"), by_reference(u"sSmtpServer"), by_reference(u"iSmtpPort"),
        by_reference(u"sSmtpUser"), by_reference(u"sSmtpPword"), by_reference(u"sFilePath"),
        by_reference(u"bSmtpSSL")));

constexpr ClassTable cinfo_table = {
    .class_id = guid("853BF860-8D1B-4BDE-95D8-6C8CDCE7156A"),
    .interface_id = guid("C16C54CD-2D44-4041-B489-5203FF6EC829"),
    .name = u"CInfo",
    .help = u"Tavrix: wersja, okna i wiadomości biblioteki",
    .members = cinfo_members,
};

}  // namespace

constexpr CreatableClass cinfo_class = {cinfo_table,
                                        [] { return make_object(cinfo_table, compose_cinfo()); }};

}  // namespace tavrix::com
