// Tavrix.ClsGetMail as hosts use it: the class, its form and the system's files, against a mailbox
// in this program.

#include <filesystem>

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
        peer.write("+OK witaj\r\n");
        bool deleted = false;
        std::string lines;
        for (std::string some; !(some = peer.read_some()).empty();) {
            lines += some;
            for (std::size_t end; (end = lines.find('\n')) != std::string::npos;) {
                peer.write(answer_to(lines.substr(0, end - 1), deleted));
                lines.erase(0, end + 1);
            }
        }
    }
    std::string answer_to(const std::string& line, bool& deleted) {
        if (line.starts_with(silent_at)) return "";
        deleted = deleted || line == "DELE 1";
        if (line == "QUIT" && deleted) messages.erase(messages.begin());
        if (line == "STAT") return "+OK " + std::to_string(messages.size()) + " 200\r\n";
        return line == "RETR 1" ? "+OK\r\n" + messages[0] + ".\r\n" : "+OK\r\n";
    }
    static std::string message(const std::string& name) {
        return "Subject: =?utf-8?Q?za=C5=BC=C3=B3=C5=82=C4=87?=\r\nContent-Type: text/xml; name=" +
               name + "\r\n\r\n<x/>\r\n";
    }
    std::string fetch_all() {
        return answer(
            mail, u"cmdGetMail",
            {u"127.0.0.1", std::int32_t{server.port()}, u"jan", u"tajne", true, u"", u"", folder});
    }

    const base::Text folder = beside_program(u"odebrane\\");
    std::vector<std::string> messages;
    std::string silent_at = "never";
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
        EXPECT_EQ(std::filesystem::file_size(std::u16string(folder + name)), 6u);
    }
}

TEST_F(GetMail, CancelsAServerThatFallsSilent) {
    messages = {message("a.xml")};
    silent_at = "PASS";
    FormUser user;
    const auto second = [&](HWND form) {
        EXPECT_EQ(fetch_all(), "bool 0") << "the form that is open comes to the front";
        EXPECT_EQ(open_forms(), std::vector<HWND>{form});
    };
    user.use([&] { EXPECT_EQ(fetch_all(), "bool 0"); }, {second, click(IDCANCEL)});
    EXPECT_EQ(messages.size(), 1u);
}

}  // namespace
}  // namespace tavrix::test
