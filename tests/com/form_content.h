#pragma once

#include "frame/about_box.h"
#include "mail/message_form.h"

namespace tavrix::test {

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
};

}  // namespace tavrix::test
