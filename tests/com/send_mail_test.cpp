// Sending as hosts call it: over the library's own SMTP and through the platform's objects, which a
// development provider stands in for.

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "tests/com/form_user.h"
#include "tests/com/late_host.h"
#include "tests/ports/loopback_server.h"

namespace tavrix::test {
namespace {

/// A server that takes every message but for x@y.pl, and keeps what it was sent.
struct TakingServer {
    std::string got;
    LoopbackServer server{[this](Peer& peer) {
        peer.write("220 x\r\n");
        for (std::string line; !(line = peer.read_until("\r\n")).empty();) {
            got += line;
            if (line == "DATA\r\n") {
                peer.write("354 x\r\n");
                got += peer.read_until("\r\n.\r\n");
            }
            peer.write(line.find("TO:<x@y.pl>") == std::string::npos ? "250 x\r\n"
                                                                     : "550 no such user\r\n");
        }
    }};

    bool has(const std::string& text) const { return got.find(text) != std::string::npos; }
};

std::string send_cdo(TakingServer& server, const char16_t* body, base::Text to = u"b@c.pl") {
    Variant texts[] = {to,           u"Zażółć", u"a@b.pl", body,
                       u"127.0.0.1", u"",       u"",       beside_program(u"probe.txt")};
    auto port = static_cast<std::int16_t>(server.server.port());
    VARIANT_BOOL ssl = VARIANT_FALSE;
    std::ofstream(std::filesystem::path(beside_program(u"probe.txt"))) << "abc";
    return answer(create(u"Tavrix.CInfo"), u"SendMailCDO",
                  {by_reference(texts[0]), by_reference(texts[1]), by_reference(texts[2]),
                   by_reference(texts[3]), by_reference(texts[4]), by_reference(&port, VT_I2),
                   by_reference(texts[5]), by_reference(texts[6]), by_reference(texts[7]),
                   by_reference(&ssl, VT_BOOL)});
}

TEST(SendMail, GoesThroughThePlatformsObjectsInTheirOrder) {
    const std::string record = base::to_utf8(beside_program(u"cdo.txt"));
    std::remove(record.c_str());
    _putenv_s("TAVRIX_CDO_RECORD", record.c_str());
    TakingServer server;
    EXPECT_EQ(send_cdo(server, u"<b>Ł</b></SPAN>"), "text ");
    EXPECT_TRUE(server.has("multipart/alternative") && server.has("probe.txt")) << server.got;
    EXPECT_EQ(send_cdo(server, u"Ł", u"x@y.pl"),
              "text Serwer odrzucił adresata x@y.pl: 550 no such user");
    std::ifstream file(record, std::ios::binary);
    const std::string told{std::istreambuf_iterator<char>(file), {}};
    const std::string path = base::to_utf8(beside_program(u"probe.txt"));
    const std::string begin = "BodyPart.Charset=utf-8\nTo=";
    const std::string port = std::to_string(static_cast<std::int16_t>(server.server.port()));
    const std::string rest =
        "AddAttachment=" + path + "\nsmtpserver=BSTR 127.0.0.1\nsmtpserverport=I2 " + port +
        "\nsmtpusessl=BOOL False\nsmtpauthenticate=I4 1\nsendusername=BSTR \nsendpassword=BSTR \n"
        "smtpconnectiontimeout=I2 30\nsendusing=I4 2\nUpdate=\nSend=\n";
    EXPECT_EQ(told, begin +
                        "b@c.pl\nFrom=a@b.pl\nSubject=Zażółć\nHTMLBody=<b>Ł</b></"
                        "SPAN>\nHTMLBodyPart.Charset=utf-8\n"
                        "TextBodyPart.Charset=utf-8\n" +
                        rest + begin + "x@y.pl\nFrom=a@b.pl\nSubject=Zażółć\nTextBody=Ł\n" + rest);
    _putenv_s("TAVRIX_CDO_RECORD", "");
}

TEST(SendMail, NeedsNoPlatformsObjects) {
    const LoadedDll dll(u"TavrixDevCdo.dll");
    ASSERT_EQ(dll.function<HRESULT STDAPICALLTYPE()>("DllUnregisterServer")(), S_OK);
    TakingServer server;
    EXPECT_EQ(send_cdo(server, u"Ł"), "text ");
    EXPECT_TRUE(server.has("Subject: =?UTF-8?B?WmHFvMOzxYLEhw==?=")) << server.got;
    EXPECT_EQ(dll.function<HRESULT STDAPICALLTYPE()>("DllRegisterServer")(), S_OK);
    const auto sendmail = [&](const char16_t* to, const base::Text& files) {
        return answer(
            create(u"Tavrix.ClsSendMail"), u"sendmail",
            {to, u"Temat", u"a@b.pl", u"Ł", u"127.0.0.1", std::int32_t{server.server.port()}, u"",
             u"", files, std::int32_t{0}, u"c@d.pl", u"<b>Ł</b>", u"e@f.pl", u"", u"1", u"", u""});
    };
    server.got.clear();
    EXPECT_EQ(sendmail(u"b@c.pl;;g@h.pl", beside_program(u"probe.txt")), "text ");
    EXPECT_TRUE(server.has("RCPT TO:<e@f.pl>") && server.has("X-Priority: 1") && server.has("YWJj"))
        << server.got;
    EXPECT_EQ(sendmail(u"b@c.pl;x@y.pl", u""),
              "text Serwer odrzucił adresata x@y.pl: 550 no such user");
    EXPECT_EQ(sendmail(u"b@c.pl", u"C:\\nie ma.pdf").substr(0, 20), "text C:\\nie ma.pdf: ");
}

TEST(SendMail, TheFormSendsFromTheAccountOfTheSettings) {
    const std::filesystem::path settings(beside_program(u"Tavrix.json"));
    TakingServer server;
    std::ofstream(settings)
        << R"({"mail":{"smtp_server":"127.0.0.1","smtp_port":)" << server.server.port()
        << R"(,"smtp_ssl":false,"sender":"ja@a.pl"},"helpdesk":{"address":"pomoc@a.pl"}})";
    FormUser user;
    std::string outcome;
    const auto info = create(u"Tavrix.CInfo");
    const auto show = [&] {
        outcome = answer(info, u"sendmail", {u"Magazyn", u"526", u"7.1", u"Ł", u"", u"", u"", u""});
    };
    user.use(show, {click(IDOK)});
    EXPECT_EQ(outcome, "long 1");
    EXPECT_TRUE(server.has("RCPT TO:<pomoc@a.pl>") && server.has("NIP: 526")) << server.got;
    std::filesystem::remove(settings);
}

}  // namespace
}  // namespace tavrix::test
