#pragma once

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

}  // namespace tavrix::test
