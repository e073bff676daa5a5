// What is said to servers, good ones and others.

#include <gtest/gtest.h>

#include "mail/cls_send_mail.h"
#include "mail/smtp/dot_stuffing.h"
#include "tests/mail/delivery_bench.h"
#include "tests/ports/loopback_server.h"

namespace tavrix::mail::smtp {
namespace {

// Everything that was said, then the outcome. `answers`, between "/", come one for each thing said,
// the greeting first; END is the connection's.
std::string talk(const std::string& answers, Envelope envelope, bool with_user) {
    Login login;
    if (with_user) login = {base::SecretUtf8("jan"), base::SecretUtf8("tajne")};
    Dialogue dialogue(std::move(envelope), std::move(login), Greeting::expected);
    std::string said;
    std::istringstream rest(answers);
    while (dialogue.step() != Dialogue::Step::done) {
        if (dialogue.step() == Dialogue::Step::send_command) {
            const base::SecretUtf8 command = dialogue.take_command();
            said += std::string(command.view().substr(0, command.size() - 2)) + "|";
        } else if (dialogue.step() == Dialogue::Step::send_message) {
            said += "MESSAGE|";
            dialogue.message_sent();
        } else if (std::string answer; !std::getline(rest, answer, '/') || answer == "END") {
            dialogue.broken(u"END");
        } else {
            // However the network cuts it.
            for (const char c : answer + "\r\n") dialogue.take({&c, 1});
        }
    }
    EXPECT_NE(dialogue.is_delivered(), !dialogue.failure().empty());
    return said + base::to_utf8(dialogue.failure());
}

// The message's kind; the server's answers; what was said to it. Words in braces stand for what
// many of them have in common.
constexpr std::string_view dialogues =
    R"(one;220 x/{hello}/235 ok/250 ok/251 ok/354 go/250 taken/221 bye;{rcpt}DATA|MESSAGE|QUIT|
one;220-a~220 x/{hello}/235 ok/250 ok/250 ok/354 go/250 taken;{rcpt}DATA|MESSAGE|QUIT|
one;220 x/250-x~250 AUTH LOGIN XOAUTH2/334 VXNlcg==/334 UA==/235 ok/250 ok/250 ok/354 go/250;EHLO [127.0.0.1]|AUTH LOGIN|amFu|dGFqbmU=|MAIL FROM:<a@b.pl>|RCPT TO:<c@d.pl>|DATA|MESSAGE|QUIT|
three;220 x/{hello}/235 ok/250 ok/250 ok/550-5.1.1 no~550 such/452 later;{rcpt}RCPT TO:<e@d.pl> NOTIFY=SUCCESS,DELAY|RCPT TO:<f@d.pl> NOTIFY=SUCCESS,DELAY|QUIT|Serwer odrzucił adresata e@d.pl: 550 5.1.1 no such; f@d.pl: 452 later
three;220 x/{hello}/235 ok/250 ok/421 closing;{rcpt}QUIT|Serwer odrzucił adresata c@d.pl: 421 closing
letters;220 x/250-x~250 SMTPUTF8/250/250/354/250;EHLO [127.0.0.1]|MAIL FROM:<a@b.pl> SMTPUTF8|RCPT TO:<c@d.pl>|DATA|MESSAGE|QUIT|
letters;220 x/250 x;EHLO [127.0.0.1]|QUIT|Serwer nie przyjmuje adresów z literami spoza ASCII przed znakiem @.
one;220 x/250-x~250 SIZE 999;EHLO [127.0.0.1]|QUIT|Wiadomość ma 1000 bajtów, a serwer przyjmuje najwyżej 999.
one;220 x/250-x~250 AUTH XOAUTH2;EHLO [127.0.0.1]|QUIT|Serwer nie przyjmuje logowania hasłem, to konto wymaga OAuth. Serwer oferuje: AUTH XOAUTH2
one;220 x/{hello}/535 5.7.139 off;{login}QUIT|Serwer odrzucił logowanie: 535 5.7.139 off (to konto wymaga OAuth lub hasła aplikacji)
none;220 x/{hello}/550 no;EHLO [127.0.0.1]|MAIL FROM:<a@b.pl> SIZE=1000 RET=HDRS|QUIT|Serwer odrzucił nadawcę: 550 no
one;554 go away;QUIT|Serwer nie przyjął połączenia: 554 go away
one;220 x/500 what;EHLO [127.0.0.1]|QUIT|Serwer nie zna rozszerzonego SMTP: 500 what
one;220 x/250 x/451 later;{bare}QUIT|Serwer odrzucił nadawcę: 451 later
one;220 x/250 x/250/250/554 {bell}no;{bare}RCPT TO:<c@d.pl>|DATA|QUIT|Serwer odrzucił wiadomość: 554  no
one;220 x/250 x/250/250/354/552 big;{bare}RCPT TO:<c@d.pl>|DATA|MESSAGE|QUIT|Serwer odrzucił wiadomość: 552 big
one;220 x/250 x/250/250/354/END;{bare}RCPT TO:<c@d.pl>|DATA|MESSAGE|Nie wiadomo, czy serwer przyjął wiadomość: END
one;END;END
one;220 x/250 x/250/END;{bare}RCPT TO:<c@d.pl>|END
one;HTTP 400 Bad Request;Niezrozumiała odpowiedź serwera: HTTP 400 Bad Request
one;220 x/999 x;EHLO [127.0.0.1]|Niezrozumiała odpowiedź serwera: 999 x
one;220 {long};Odpowiedź serwera nie ma końca.
one;{many};Odpowiedź serwera nie ma końca.
one;220 x~250 x;Serwer odpowiada niepytany: 250 x)";

std::string expanded(std::string text) {
    std::string many;
    for (int i = 0; i < 300; ++i) many += "220-x~";
    const std::pair<std::string, std::string> words[] = {
        {"{hello}", "250-poczta~250-SIZE 5000~250-auth login PLAIN~250 DSN"},
        {"{rcpt}",
         "{login}MAIL FROM:<a@b.pl> SIZE=1000 RET=HDRS|RCPT TO:<c@d.pl> NOTIFY=SUCCESS,DELAY|"},
        {"{login}", "EHLO [127.0.0.1]|AUTH PLAIN AGphbgB0YWpuZQ==|"},
        {"{bare}", "EHLO [127.0.0.1]|MAIL FROM:<a@b.pl>|"},
        {"{long}", std::string(5000, 'x')},
        {"{many}", many},
        {"{bell}", "\a"},
        {"~", "\r\n"}};
    for (const auto& [word, meaning] : words) {
        for (std::size_t at = 0; (at = text.find(word, at)) != std::string::npos;
             at += meaning.size()) {
            text.replace(at, word.size(), meaning);
        }
    }
    return text;
}

TEST(Dialogue, SaysWhatServersUnderstand) {
    std::istringstream lines{std::string(dialogues)};
    for (std::string kind, answers, expected; std::getline(lines, kind, ';');) {
        std::getline(lines, answers, ';');
        std::getline(lines, expected);
        Envelope envelope{"a@b.pl", {"c@d.pl"}, "SUCCESS,DELAY", 1000, kind == "letters"};
        if (kind == "three") envelope.recipients = {"c@d.pl", "e@d.pl", "f@d.pl"};
        EXPECT_EQ(talk(expanded(answers), envelope, kind != "none"), expanded(expected)) << answers;
    }
}

// A server that takes everything until `answers` say otherwise; `got` is what it was sent.
base::Text sent_to(std::string& got, const std::string& verdict, const base::Text& body,
                   std::int32_t ssl = 0, const std::string& in_the_middle = "") {
    test::LoopbackServer server([&](test::Peer& peer) {
        peer.write("220 x\r\n");
        for (std::string line; !(line = peer.read_until("\r\n")).empty();) {
            got += line;
            if (line == "DATA\r\n" && !in_the_middle.empty()) {
                peer.write("354 go\r\n");
                peer.read_some();
                peer.write(in_the_middle);
                while (!peer.read_some().empty()) {
                }
                return;
            }
            if (line == "DATA\r\n") {
                peer.write("354 go\r\n");
                got += peer.read_until("\r\n.\r\n");
                peer.write(verdict);
            } else {
                peer.write(line == "QUIT\r\n" ? "221 x\r\n" : "250 x\r\n");
            }
        }
    });
    test::DeliveryBench bench;
    bench.connection.no_progress_timeout = std::chrono::milliseconds(300);
    const ClsSendMail mail(bench.ports);
    return mail.sendmail(u"b@c.pl", u"", u"a@b.pl", body, u"127.0.0.1", server.port(), u"jan",
                         base::SecretText(u"tajne"), u"", ssl, u"", u"", u"", u"", u"", u"", u"");
}

TEST(Sender, HandsOverAndGivesUp) {
    DotStuffing stuffing;
    std::string stuffed;
    for (const std::string piece : {".a\r", "\n", "..", "\r\nb.\r\n", "."}) {
        stuffed += base::chars_of(stuffing.stuffed(base::bytes_of(piece)));
    }
    EXPECT_EQ(stuffed, "..a\r\n...\r\nb.\r\n..");
    std::string got;
    EXPECT_EQ(sent_to(got, "250 x\r\n", u"a\n" + base::Text(75, u'x') + u".b\n.\n"), u"");
    EXPECT_NE(got.find("x=\r\n=2Eb\r\n=2E\r\n.\r\nQUIT\r\n"), std::string::npos) << got;
    got.clear();
    EXPECT_EQ(sent_to(got, "250 x\r\n", u"x", 1),
              u"Serwer nie oferuje szyfrowania TLS na tym porcie.");
    EXPECT_EQ(got.find("AUTH"), std::string::npos) << "no password in the clear";
    EXPECT_EQ(got.find("MAIL"), std::string::npos);
    EXPECT_EQ(sent_to(got, "", base::Text(20'000'000, u'x'), 0, "552 too much\r\n"),
              u"Serwer przerwał przyjmowanie wiadomości: 552 too much");
}

/// Fails before anything is said.
struct UnreachableServer final : ports::Stream {
    explicit UnreachableServer(base::Text its_words) : words(std::move(its_words)) {}
    void connect(const ports::StreamAddress&, ports::Security) override {
        throw ports::StreamError(10053, words);
    }
    bool connected_within(std::chrono::milliseconds) override { return false; }
    ports::Sent send(base::ByteView, std::chrono::milliseconds) override { return {}; }
    ports::Received receive(std::chrono::milliseconds) override { return {}; }
    void close() noexcept override {}
    base::Text words;
};

TEST(Sender, AlwaysSaysWhyNothingWent) {
    for (const auto& [words, end] :
         {std::pair(u"", u"Nieznany błąd"), {u"SSL certificate", u"http.private_ca_file."}}) {
        test::DeliveryBench bench;
        bench.ports.make_stream = [words](const auto&) {
            return std::make_unique<UnreachableServer>(words);
        };
        const base::Text why = ClsSendMail(bench.ports)
                                   .sendmail(u"b@c.pl", u"", u"a@b.pl", u"", u"h", 25, u"", {}, u"",
                                             0, u"", u"", u"", u"", u"", u"", u"");
        EXPECT_TRUE(why.ends_with(end)) << base::to_utf8(why);
    }
}

TEST(ClsSendMail, RefusesWhatCannotBeSent) {
    test::DeliveryBench bench;
    const ClsSendMail mail(bench.ports);
    const auto result = [&](const base::Text& to, const base::Text& host, std::int32_t port,
                            const base::Text& user, const base::Text& files) {
        return mail.sendmail(to, u"", u"a@b.pl", u"", host, port, user, {}, files, 0, u"", u"", u"",
                             u"", u"", u"", u"");
    };
    EXPECT_EQ(result(u";; ;", u"h", 25, u"", u""), u"Nie podano adresata.");
    EXPECT_EQ(result(u"b@c\r\n.pl", u"h", 25, u"", u""), u"Nieprawidłowy adres: b@c  .pl");
    EXPECT_EQ(result(u"b@c.pl", u" ", 25, u"", u""), u"Nie podano serwera SMTP.");
    EXPECT_EQ(result(u"b@c.pl", u"h", 65536, u"", u""), u"Nieprawidłowy port serwera: 65536");
    EXPECT_EQ(result(u"b@c.pl", u"h", 25, u"jan\n", u""), u"Nieprawidłowa nazwa użytkownika.");
    EXPECT_EQ(result(u"b@c.pl", u"h\r\n", 25, u"", u""), u"Nieprawidłowy adres serwera.");
    EXPECT_EQ(result(u"b@c.pl", u"h", 25, u"", u";/nie/ma.pdf"),
              u"/nie/ma.pdf: No such file or directory");
    EXPECT_EQ(result(u"b@c.pl", u"127.0.0.1", 1, u"", u"").substr(0, 7), u"Failed ");
}

}  // namespace
}  // namespace tavrix::mail::smtp
