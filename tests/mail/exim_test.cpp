// Messages that a real server took.

#include <gtest/gtest.h>

#include "mail/cls_send_mail.h"
#include "mail/pop3/retrieval.h"
#include "mail/smtp_mailer.h"
#include "tests/mail/delivery_bench.h"
#include "tests/mail/dovecot.h"
#include "tests/mail/reading_bench.h"
#include "tests/support/exim.h"

namespace tavrix::mail {
namespace {

using base::Text;

// What our own retrieval makes of it: the subject and the file.
std::string fetched(const std::string& message) {
    test::Dovecot dovecot;
    std::filesystem::copy(message, dovecot.new_mail() + "/1");
    dovecot.deliver();
    test::ReadingBench reading;
    test::DeliveryBench bench;
    ports::NoTrace trace;
    RetrievalSettings settings;
    settings.host = u"127.0.0.1";
    settings.port = dovecot.port();
    settings.user = u"jan";
    settings.password = base::SecretText(u"tajne");
    settings.folder = reading.folder();
    Retrieval retrieval(RetrievalForm::manager, settings,
                        {ports::make_curl_mail_stream({}), bench.clock, trace, *reading.code_page,
                         [&] { return std::make_shared<CMessage>(reading.message()); },
                         std::chrono::milliseconds(0)});
    while (retrieval.go_on(std::chrono::milliseconds(100))) {
    }
    return base::to_utf8(retrieval.message()->text<MessageProperty::Subject>()) + "|" +
           reading.files()["in/Łąka.pdf"];
}

TEST(Exim, DeliversWhatWasSent) {
    if (!test::Exim::is_installed()) GTEST_SKIP() << "exim4-daemon-light is not installed";
    test::Exim exim;
    test::DeliveryBench bench;
    const ClsSendMail mail(bench.ports);
    const Text file = bench.file("Łąka.pdf", std::string(3'000'000, '\xFE'));
    const auto send = [&](const Text& to, const Text& bcc, const base::SecretText& password,
                          std::int32_t ssl) {
        return mail.sendmail(to, u"Zażółć", u"Jan <jan@localhost>", u"Treść\n.\n..x", u"localhost",
                             exim.port(), u"jan", password, file, ssl, u"", u"<b>Treść</b>", bcc,
                             u"NEVER", u"1", u"", u"");
    };
    const base::SecretText password(u"tajne");
    EXPECT_NE(send(u"jan@localhost", u"", password, 1), u"")
        << "a certificate that nobody vouches for";
    bench.connection.private_ca_file = exim.certificate();
    EXPECT_EQ(send(u"jan@localhost", u"ola@localhost;", password, 1), u"");
    const std::string expected =
        "to: jan@localhost\nsubject: Zażółć\nx-priority: "
        "1\nmultipart/mixed\nmultipart/alternative\n"
        "text/plain  'Treść\\n.\\n..x'\ntext/html  '<b>Treść</b>'\napplication/pdf Łąka.pdf "
        "30a2252d\n";
    const std::string fields = "envelope-to to cc bcc subject x-priority";
    const std::string delivered = exim.delivered_to("jan");
    EXPECT_EQ(bench.judged(delivered, fields), "envelope-to: jan@localhost\n" + expected);
    if (test::Dovecot::is_installed()) {
        EXPECT_EQ(fetched(delivered), "Zażółć|" + std::string(3'000'000, '\xFE'));
    }
    EXPECT_EQ(bench.judged(exim.delivered_to("ola"), fields),
              "envelope-to: ola@localhost\n" + expected);

    EXPECT_EQ(send(u"jan@localhost;ela@localhost;ola@localhost", u"", password, 1),
              u"Serwer odrzucił adresata ela@localhost: 550 nobody of that name");
    EXPECT_EQ(send(u"jan@localhost", u"", base::SecretText(u"złe"), 1),
              u"Serwer odrzucił logowanie: 535 Incorrect authentication data");
    EXPECT_EQ(exim.count_for("jan") + exim.count_for("ola"), 0u)
        << "one refused recipient: nobody gets it";
    Unheard nobody;
    outgoing::Draft draft;
    draft.from = outgoing::parse_mailbox(u"jan@localhost");
    draft.to = {outgoing::parse_mailbox(u"ola@localhost")};
    EXPECT_EQ(
        deliver(bench.ports,
                {u"localhost", exim.tls_port(), ports::Security::tls, u"jan", password.copy()},
                draft, "SUCCESS", nobody),
        u"");
    exim.delivered_to("ola");
    const std::string notification = bench.judged(exim.delivered_to("jan"), "auto-submitted");
    EXPECT_EQ(notification.substr(0, 31), "auto-submitted: auto-generated\n") << notification;
    // In the clear, as a host asks for it, through what stands in for the platform's sender.
    SmtpMailer mailer(bench.ports);
    mailer.send({u"\"Ola, s.c.\" <ola@localhost>, jan@localhost", u"ą", u"jan@localhost",
                 u"<TD>x</TD>", true, file, u"127.0.0.1", static_cast<std::int16_t>(exim.port()),
                 u"jan", password.copy(), false});
    EXPECT_EQ(bench.judged(exim.delivered_to("ola"), "to subject"),
              "to: \"Ola, s.c.\" <ola@localhost>, jan@localhost\nsubject: "
              "ą\nmultipart/mixed\nmultipart/alternative\n"
              "text/plain  'x'\ntext/html  '<TD>x</TD>'\napplication/pdf Łąka.pdf 30a2252d\n");
}

}  // namespace
}  // namespace tavrix::mail
