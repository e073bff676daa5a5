#pragma once

#include "dialogs/chart.h"
#include "frame/about_box.h"
#include "mail/message_form.h"
#include "mail/retrieval_form.h"

namespace tavrix::test {

/// Retrieves for as long as somebody looks.
struct ShownRetrieval final : mail::RetrievalWork {
    explicit ShownRetrieval(mail::RetrievalForm its_form) : which(its_form) {}
    mail::RetrievalForm form() const noexcept override { return which; }
    bool go_on(std::chrono::milliseconds) noexcept override { return --pieces_left > 0; }
    void cancel() noexcept override { cancelled = pieces_left > 0; }
    const mail::RetrievalLabels& labels() const noexcept override { return shown; }

    mail::RetrievalForm which;
    mail::RetrievalLabels shown{.connection = u"poczta.firma.example:995",
                                .status = u"ODBIERAM",
                                .time = u"2026-11-14 21:49:05",
                                .from = u"From: Małgorzata Śliwińska <biuro@firma.example>",
                                .subject = u"Subject: Faktura FV/118/11/2026 & załączniki",
                                .received_bytes = 700,
                                .expected_bytes = 1000};
    int pieces_left = 1'000'000;
    bool cancelled = false;
};

/// What hosts fill the forms with.
struct FormContent {
    frame::AboutBox about{
        u"Tavrix", u"10.0.36",
        u"Składniki dla polskich programów handlowych: KSeF, kody kreskowe, poczta, podpis PDF.\n"
        u"© 2026 Autorzy Tavrix, licencja MIT.",
        [] {}};
    mail::MailRecord record{
        .source = u"Faktury",
        .tax_number = u"525-000-12-34",
        .host_version = u"8.4.112",
        .sender = u"",
        .recipients = u"pomoc@example.pl; ksiegowosc@example.pl",
        .subject = u"BOK-QUEN",
        .body = {u"Dzień dobry,\r\n\r\nprzy wysyłaniu faktury FV/118/11/2026 do KSeF program "
                 u"zgłasza błąd. Proszę o pomoc, jutro mija termin płatności.",
                 u"Użytkownik: Małgorzata Śliwińska\r\nStanowisko: KASA-3\r\nSystem: Windows 10",
                 u"Błąd 1042: nie można odczytać żądanej wartości z rejestru."},
        .attachments = u"C:\\Faktury\\2026\\FV_118_11_2026.xml;C:\\Faktury\\Dzienniki\\błędy.txt",
        .mode = 2};
    mail::MessageForm message{record, u"14.11.2026",
                              [](mail::smtp::SendingListener&) { return base::Text(); }};
    ShownRetrieval manager{mail::RetrievalForm::manager};
    ShownRetrieval socket{mail::RetrievalForm::socket};
};

/// Half a year of a shop with one month that nobody entered.
inline dialogs::Chart chart_of_a_shop(dialogs::ChartKind kind) {
    const bool is_pie = kind == dialogs::ChartKind::pie;
    dialogs::Chart chart;
    chart.title = is_pie ? u"Sprzedaż według miesięcy" : u"Sprzedaż i koszty w 2026 roku";
    chart.kind = kind;
    chart.options = dialogs::chart_options(is_pie ? 1 : 5);
    chart.data = {
        .label_heading = u"Miesiąc",
        .labels = {u"styczeń", u"luty", u"marzec", u"kwiecień", u"maj", u"czerwiec"},
        .series = {{u"Sprzedaż, zł",
                    {182340.5, 215106, 240829, 254190, 198700, 238250},
                    {u"182 340,50", u"215 106,00", u"240 829,00", u"254 190,00", u"198 700,00",
                     u"238 250,00"}},
                   {u"Koszty, zł",
                    {157400, 166900, 156300, {}, 148100, 205300},
                    {u"157 400,00", u"166 900,00", u"156 300,00", u"", u"148 100,00",
                     u"205 300,00"}},
                   {u"Zysk, zł",
                    {24940.5, 48206, 84529, {}, 50600, -12950},
                    {u"24 940,50", u"48 206,00", u"84 529,00", u"", u"50 600,00", u"-12 950,00"}}},
        .rows_asked = 6,
        .failure = {}};
    return chart;
}

}  // namespace tavrix::test
