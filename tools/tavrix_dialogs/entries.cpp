#include "tools/tavrix_dialogs/entries.h"

#include "com/forms/forms.h"
#include "ports/windows/adapters.h"
#include "tests/com/form_content.h"
#include "tools/tavrix_dialogs/sample_browser.h"

namespace tavrix::dialogs_program {
namespace {

using base::Text;

Text show_informator(const dialogs::InformatorRecord& record) {
    const auto choice = com::make_informator_window()->show(informator_form(record));
    return u"przycisk " + base::to_decimal(choice ? choice->button : dialogs::no_button);
}

Text show_usual_informator() {
    return show_informator(
        {u"Zapis dokumentu",
         u"Faktura FV/118/11/2026 ma niezapisane zmiany.\n\nCzy zapisać je przed zamknięciem?",
         {u"&Tak", u"&Nie", u"&Anuluj"}});
}

Text show_large_informator() {
    dialogs::InformatorRecord record{u"Błędy w paczce dokumentów", u"", {}};
    for (int i = 1; i <= 200; ++i) {
        record.text += u"Dokument " + base::to_decimal(i) +
                       u": nabywca nie ma numeru NIP, a kwota przekracza 450 zł brutto.\n";
    }
    record.buttons = {u"&Popraw wszystkie",
                      u"Popraw tylko te, których termin płatności mija w tym tygodniu",
                      u"P&omiń i wyślij pozostałe",
                      u"&Drukuj listę",
                      u"Zapisz listę do p&liku",
                      u"",
                      u"",
                      u"Wyślij &wiadomość do księgowości z listą dokumentów i powodów",
                      u"&Zamknij"};
    return show_informator(record);
}

Text show_order_informator() {
    const dialogs::OrderInformatorRecord record{
        u"Zamówienie ZAM/42/11/2026",
        u"Odbiorca zamówił więcej, niż jest w magazynie. Podaj ilość do realizacji i miejsce "
        u"wydania.",
        {u"&Realizuj", u"&Odłóż", u"&Anuluj zamówienie"},
        {u"&Magazyn główny", u"&Sklep przy Długiej", u"&Hurtownia", u"", u""},
        3,
        u"12,50",
        0};
    const auto choice = com::make_informator_window()->show(informator_form(record));
    if (!choice) return u"przycisk -1";
    return u"przycisk " + base::to_decimal(choice->button) + u", wartość " +
           choice->value.value_or(record.value) + u", wyjście " +
           base::to_decimal(choice->outcome.value_or(record.outcome));
}

Text show_printers(const ports::PrinterList& list) {
    const auto choice = com::make_printer_window()->show(dialogs::printer_choice_form(list));
    return choice ? u"drukarka " + *choice : u"bez wyboru";
}

Text show_own_printers() {
    return show_printers(ports::make_windows_printers()->list());
}

Text show_sample_printers() {
    return show_printers({{u"Drukarka etykiet", u"Kasa 3 (laserowa)",
                           u"\\\\biuro\\Kolorowa A3 na drugim piętrze", u"Wydruk do pliku PDF"},
                          u"Kasa 3 (laserowa)"});
}

template <dialogs::ChartKind kind>
Text show_chart() {
    const auto printers = ports::make_windows_printers();
    const auto choose = [&] {
        return com::make_printer_window()->show(dialogs::printer_choice_form(printers->list()));
    };
    com::make_chart_window(choose)->show([] { return test::chart_of_a_shop(kind); });
    return {};
}

Text show_browser() {
    const auto clock = ports::make_windows_clock();
    dialogs::BrowserSession session = sample_browser(*clock);
    session.run(0, u"select *\nfrom dok_fak\nwhere ddout_data_wyst >= '2026-11-01'");
    while (session.is_busy()) session.go_on();
    const auto chosen = com::make_browser_window()->show(session);
    return chosen ? u"baza " + session.databases()[*chosen].name : u"bez wyboru";
}

Text show_about() {
    com::make_about_window()->show(test::FormContent().about);
    return {};
}

Text show_message() {
    const test::FormContent content;
    com::make_message_window()->show(content.message);
    return {};
}

Text show_retrieval() {
    test::FormContent content;
    com::make_retrieval_window()->show(content.manager);
    return {};
}

Text show_socket_retrieval() {
    test::FormContent content;
    com::make_retrieval_window()->show(content.socket);
    return {};
}

constexpr Entry all_entries[] = {
    {"informator", u"komunikat z przyciskami", &show_usual_informator},
    {"informator-duzy", u"to samo: długi tekst, wiele przycisków", &show_large_informator},
    {"zamowienie", u"komunikat o zamówieniu: wartość i wyjście", &show_order_informator},
    {"drukarka", u"wybór drukarki, drukarki tego komputera", &show_own_printers},
    {"drukarka-przyklad", u"to samo z przykładową listą", &show_sample_printers},
    {"wykres-slupkowy", u"wykres słupkowy", &show_chart<dialogs::ChartKind::bars>},
    {"wykres-liniowy", u"wykres liniowy", &show_chart<dialogs::ChartKind::lines>},
    {"wykres-kolowy", u"wykres kołowy", &show_chart<dialogs::ChartKind::pie>},
    {"browse", u"bazy danych i zapytania, przykładowy serwer", &show_browser},
    {"o-programie", u"informacje o bibliotece", &show_about},
    {"wiadomosc", u"formularz wiadomości; nic nie wysyła", &show_message},
    {"odbior", u"odbieranie poczty", &show_retrieval},
    {"odbior-gniazdo", u"odbieranie poczty, okno drugiej drogi", &show_socket_retrieval},
};

}  // namespace

std::span<const Entry> entries() {
    return all_entries;
}

}  // namespace tavrix::dialogs_program
