// What is made of a draft, as Python's email package and the library's own readings see it.

#include <gtest/gtest.h>

#include "mail/outgoing/notification.h"
#include "tests/mail/delivery_bench.h"
#include "tests/mail/reading_bench.h"

namespace tavrix::mail::outgoing {
namespace {

using base::Text;

TEST(Outgoing, SaysWhatTheDraftSays) {
    test::DeliveryBench bench;
    const std::string letters("\x00\xFF\r\n.\r\n--x", 10);
    Draft draft;
    draft.from = parse_mailbox(u"Zażółć \"Gęślą\" <jan@bławat.pl>");
    draft.to = parse_mailboxes(u"ola@firma.pl;; \"Ola; s.c.\" <o.k@firma.pl>", u";");
    draft.cc = {parse_mailbox(Text(16, u'ż') + u" <c@firma.pl>")};
    draft.bcc = {parse_mailbox(u"ukryty@firma.pl")};
    draft.subject = u"Faktura ąę " + Text(120, u'ł') + u"\r\nBcc: x@y.pl";
    draft.body = u".\n--x\r-----Original Message-----\r\nFrom ŻÓŁW =20 \n" + Text(200, u'.') +
                 u"\U0001F4C4\nspacja ";
    draft.html = u"<style>p{}</style><p>Za&#380;&oacute;łć<br>1 &lt; 2</p><td>a</td><td>b</td>";
    draft.reply_to = u"odp@firma.pl";
    draft.sender = u"biuro@firma.pl";
    draft.priority = u"1\r\nX: y";
    draft.files = {bench.file("FV 1.pdf", letters),
                   bench.file("Zażółć \"gęślą\" jaźń 日.xml", letters),
                   bench.file("pusty.txt", "")};
    OutgoingMessage message(draft, bench.ports.composing);
    const std::uint64_t size = message.size();
    const std::string bytes = test::DeliveryBench::bytes_of(message);
    EXPECT_EQ(bytes.size(), size);
    bench.file("m.eml", bytes);
    const std::string path = bench.scratch.path() / "m.eml";
    const std::string told =
        bench.judged(path, "date from sender reply-to to cc bcc subject x-priority mime-version");
    const std::string long_dots(200, '.');
    std::string name_16;
    std::string subject_120;
    for (int i = 0; i < 16; ++i) name_16 += "ż";
    for (int i = 0; i < 120; ++i) subject_120 += "ł";
    EXPECT_EQ(told,
              "date: Sat, 21 Nov 2026 12:30:15 +0100\n"
              "from: \"Zażółć \\\"Gęślą\\\"\" <jan@xn--bawat-k7a.pl>\n"
              "sender: biuro@firma.pl\nreply-to: odp@firma.pl\n"
              "to: ola@firma.pl, \"Ola; s.c.\" <o.k@firma.pl>\n"
              "cc: " +
                  name_16 +
                  " <c@firma.pl>\n"
                  "subject: Faktura ąę " +
                  subject_120 +
                  " Bcc: x@y.pl\n"
                  "x-priority: 1 X: y\nmime-version: 1.0\n"
                  "multipart/mixed\nmultipart/alternative\n"
                  "text/plain  '.\\n--x\\n-----Original Message-----\\nFrom ŻÓŁW =20 \\n" +
                  long_dots +
                  "\U0001F4C4\\nspacja '\n"
                  "text/html  '<style>p{}</style><p>Za&#380;&oacute;łć<br>1 &lt; "
                  "2</p><td>a</td><td>b</td>'\n"
                  "application/pdf FV 1.pdf b85a60db\n"
                  "text/xml Zażółć \"gęślą\" jaźń 日.xml b85a60db\n"
                  "application/octet-stream pusty.txt e3b0c442\n");
    EXPECT_EQ(bytes.find("ukryty"), std::string::npos);
    std::size_t line = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        ASSERT_LT(static_cast<unsigned char>(bytes[i]), 0x80) << i;
        ASSERT_EQ(bytes[i] == '\n', i > 0 && bytes[i - 1] == '\r') << i;
        line = bytes[i] == '\n' ? 0 : line + 1;
        ASSERT_LE(line, 110u) << bytes.substr(i - line, 100);
    }
    // Hosts fetch it with the literal reading: both files that its types allow, whole.
    test::ReadingBench reading;
    CMessage literal = reading.message();
    EXPECT_EQ(literal.DodajMail(base::from_utf8(bytes), reading.folder(), true), 4);
    EXPECT_EQ(reading.files()["in/FV 1.pdf"], letters);
    draft.body.clear();
    draft.files.clear();
    OutgoingMessage of_html(draft, bench.ports.composing);
    EXPECT_NE(test::DeliveryBench::bytes_of(of_html).find(
                  "\r\nZa=C5=BC=C3=B3=C5=82=C4=87\r\n1 < 2\r\na b\r\n"),
              std::string::npos);
}

TEST(Outgoing, ReadsALargeFileInPieces) {
    test::DeliveryBench bench;
    Draft draft;
    draft.from = parse_mailbox(u"jan");
    draft.files = {bench.file("x.zip", "")};
    std::filesystem::resize_file(bench.scratch.path() / "x.zip", 50'000'000);
    OutgoingMessage message(draft, bench.ports.composing);
    std::uint64_t size = 0;
    for (auto piece = message.next(); !piece.empty(); piece = message.next()) {
        ASSERT_LT(piece.size(), 65'536u);
        size += piece.size();
    }
    EXPECT_EQ(size, message.size());
    for (const std::uintmax_t other : {49'999'999u, 50'000'001u}) {
        std::filesystem::resize_file(bench.scratch.path() / "x.zip", 50'000'000);
        OutgoingMessage changed(draft, bench.ports.composing);
        std::filesystem::resize_file(bench.scratch.path() / "x.zip", other);
        EXPECT_THROW(test::DeliveryBench::bytes_of(changed), base::AutomationError) << other;
    }
}

TEST(Outgoing, KnowsAddressesAndWhatIsNone) {
    const struct {
        Text given;
        const char* address;
    } cases[] = {
        {u" a.b@C.pl ", "a.b@C.pl"},
        {u"\"x y\"@z.pl", "\"x y\"@z.pl"},
        {u"<root>", "root"},
        {u"ąę@żółw.pl", "ąę@xn--w-uga1v8h.pl"},
        {u"a@ŁÓDŹ.münchen.de", "a@xn--d-uga0v4h.xn--mnchen-3ya.de"},
        {u"a@例え", "a@xn--r8jz45g"},
        {u"a@[192.0.2.1]", "a@[192.0.2.1]"},
        {u"a@b.pl\r\nRCPT TO:<c@d.pl>", nullptr},
        {u"X\n <a@b.pl>", nullptr},
        {Text(u"a@b\0.pl", 7), nullptr},
        {u"a@b.pl> <c@d.pl", nullptr},
        {u"a@b.pl>", nullptr},
        {u"a b@c.pl", nullptr},
        {u"a,c@b.pl", nullptr},
        {u"@b.pl", nullptr},
        {u"a@", nullptr},
        {u"a@b..pl", nullptr},
        {u"a@b/c", nullptr},
        {u"", nullptr},
        {u"a@" + Text(64, u'x'), nullptr},
    };
    for (const auto& row : cases) {
        try {
            EXPECT_EQ(parse_mailbox(row.given).address,
                      row.address == nullptr ? "refused" : row.address);
        } catch (const base::AutomationError&) {
            EXPECT_EQ(row.address, nullptr) << base::to_utf8(row.given);
        }
    }
    const struct {
        Text options;
        const char* notify;
    } wishes[] = {{u"SUCCESS|delay", "SUCCESS,DELAY"},
                  {u"14", "SUCCESS,FAILURE,DELAY"},
                  {u"never,success", "NEVER"},
                  {u"1", "NEVER"},
                  {u"0", ""},
                  {u"99", ""},
                  {u"tak", ""},
                  {u"a@b.pl", ""}};
    for (const auto& row : wishes) EXPECT_EQ(read_notification(row.options).notify, row.notify);
}

}  // namespace
}  // namespace tavrix::mail::outgoing
