// Tavrix.ClsGetMail as hosts use it: the class, its form and the system's files, against a mailbox
// in this program.

#include <filesystem>
#include <fstream>
#include <mutex>

#include "tests/com/form_user.h"
#include "tests/com/late_host.h"
#include "tests/ports/loopback_server.h"

namespace tavrix::test {
namespace {

class GetMail : public testing::Test {
  protected:
    GetMail() { std::filesystem::remove_all(std::u16string(folder)); }
    ~GetMail() override { std::filesystem::remove_all(std::u16string(folder)); }

    // A server that says nothing to `silent_at`.
    void serve(Peer& peer) {
        bool deleted = false;
        peer.write("+OK witaj\r\n");
        for (std::string line; !(line = peer.read_until("\r\n")).empty();) {
            if (line.starts_with(silent_at)) continue;
            std::string answer = "+OK\r\n";
            if (line == "STAT\r\n") answer = "+OK " + std::to_string(messages.size()) + " 200\r\n";
            if (line == "RETR 1\r\n") answer += messages[0] + ".\r\n";
            deleted = deleted || line == "DELE 1\r\n";
            if (line == "QUIT\r\n" && deleted) messages.erase(messages.begin());
            said += line;
            peer.write(answer);
        }
    }
    static std::string message(const std::string& name) {
        return "Subject: =?utf-8?Q?za=C5=BC=C3=B3=C5=82=C4=87?=\r\nContent-Type: text/xml; name=" +
               name + "\r\n\r\n<x/>\r\n";
    }
    std::string fetch_all() {
        return answer(mail, u"cmdGetMail",
                      {u"127.0.0.1", static_cast<LONG>(server.port()), u"jan", u"tajne", true, u"",
                       u"", folder});
    }

    const base::Text folder = beside_program(u"odebrane\\");
    std::vector<std::string> messages;
    std::string said;
    std::string silent_at = "never";
    FormUser user;
    const LoopbackServer server{[this](Peer& peer) { serve(peer); }};
    const ComPointer<IDispatch> mail = create(u"Tavrix.ClsGetMail");
};

TEST_F(GetMail, EmptiesTheBoxAndGivesMessages) {
    messages = {message("a.xml"), message("b.xml")};
    const Variant text(base::Text(u"127.0.0.1"));
    BSTR host = text.get().bstrVal;
    LONG port = server.port();
    Variant login(u"jan");
    VARIANT_BOOL no = VARIANT_FALSE;
    // As VB passes its variables.
    const Outcome first =
        call(mail, u"cmdGetMailM",
             {by_reference(&host, VT_BSTR), by_reference(&port, VT_I4), by_reference(login),
              by_reference(login), by_reference(&no, VT_BOOL), folder, by_reference(&no, VT_BOOL)});
    ASSERT_EQ(first.result.get().vt, VT_DISPATCH) << written(first);
    const ComPointer<IDispatch> kept(first.result.get().pdispVal);
    EXPECT_EQ(written(invoke(kept, u"Subject", DISPATCH_PROPERTYGET)), "text zażółć");
    EXPECT_EQ(written(invoke(kept, u"Files", DISPATCH_PROPERTYGET)), "text ;a.xml");
    EXPECT_EQ(messages.size(), 2u);
    EXPECT_EQ(fetch_all(), "bool -1");
    EXPECT_TRUE(messages.empty());
    for (const char16_t* name : {u"a.xml", u"b.xml"}) {
        EXPECT_EQ(std::filesystem::file_size(std::u16string(folder + name)), 4u);
    }
}

TEST_F(GetMail, CancelsAServerThatFallsSilent) {
    messages = {message("a.xml")};
    silent_at = "PASS";
    const auto second = [&](HWND form) {
        EXPECT_EQ(fetch_all(), "bool 0") << "the form that is open comes to the front";
        EXPECT_EQ(open_forms(), std::vector<HWND>{form});
    };
    user.use([&] { EXPECT_EQ(fetch_all(), "bool 0"); }, {second, click(IDCANCEL)});
    EXPECT_EQ(messages.size(), 1u);
}

}  // namespace
}  // namespace tavrix::test
