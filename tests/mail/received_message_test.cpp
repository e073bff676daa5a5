// Messages as a server gives them out: what the retrieval makes of them.

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <chrono>

#include "base/error.h"
#include "mail/cmessages.h"
#include "mail/mime/file_name.h"
#include "tests/mail/reading_bench.h"

namespace tavrix::mail {
namespace {

using base::Text;
using Name = MessageProperty;

TEST(FileNames, NeverLeaveTheirFolder) {
    const Text long_stem(300, u'ż');
    const struct {
        Text given;
        Text expected;
    } cases[] = {
        {u"Faktura VAT 1..2 (żółta).pdf", u"Faktura VAT 1..2 (żółta).pdf"},
        {u"..\\..\\x.exe", u"____x.exe"},
        {u"C:\\x", u"C__x"},
        {u"a?b*c\"d<e>f|g\x01h\x7F.txt", u"a_b_c_d_e_f_g_h_.txt"},
        {u"fv\u202Efdp.exe", u"fv_fdp.exe"},
        {u"x\xD800y\xDC00.txt", u"x_y_.txt"},
        {u"\U0001F4C4.pdf", u"\U0001F4C4.pdf"},
        {u"x.pdf. . ", u"x.pdf"},
        {u"..", u"_"},
        {u" ", u"_"},
        {u"CON", u"_CON"},
        {u"nul.tar.gz", u"_nul.tar.gz"},
        {u"COM1 .txt", u"_COM1 .txt"},
        {u"lpt\u00B9", u"_lpt\u00B9"},
        {u"COM10.txt", u"COM10.txt"},
        {Text(251, u'x') + u".pdf", Text(251, u'x') + u".pdf"},
        {Text(252, u'x') + u".pdf", Text(251, u'x') + u".pdf"},
        {long_stem + u".pdf", long_stem.substr(0, 125) + u".pdf"},
    };
    for (const auto& row : cases) EXPECT_EQ(harmless_file_name(row.given), row.expected);
    DistinctNames names(12);
    EXPECT_EQ(names.take(u"Faktura.pdf"), u"Faktura.pdf");
    EXPECT_EQ(names.take(u"FAKTURA.PDF"), u"FAKT (2).PDF");
    EXPECT_EQ(names.take(u"Faktura.pdf"), u"Fakt (3).pdf");
    // Names that are equal but for what a number displaces: they would not end if each tried all.
    DistinctNames many(longest_file_name);
    for (char16_t last = 0x4E00; last < 0x4E00 + 5'000; ++last) {
        const Text name = Text(248, u'x') + last + u".pdf";
        many.take(name);
        many.take(name);
    }
}

// "from|subject|text|files" of a message.
std::string told(test::ReadingBench& bench, const std::string& bytes) {
    CMessage message = bench.message();
    message.take(base::bytes_of(bytes), bench.folder());
    return base::to_utf8(message.text<Name::From>() + u"|" + message.text<Name::Subject>() + u"|" +
                         message.text<Name::MessageText>() + u"|" + message.Files());
}

TEST(ReceivedMessages, ComeOutAsTheirSendersMeantThem) {
    const std::string file =
        "Content-Type: application/pdf\nContent-Transfer-Encoding: base64\nContent-Disposition: "
        "attachment; ";
    const struct {
        const char* story;
        std::string lines;
        std::string expected;
    } cases[] = {
        {"folded header, the first of a repeated one, words joined before they are decoded",
         "From: =?iso-8859-2?Q?=A3ukasz?=\n =?ISO-8859-2?q?_=AFak?= <l@x.pl>\nsubject: "
         "=?utf-8?B?WmHF?=\n"
         "\t=?UTF-8?B?vMOzxYLEhw==?= \"=?utf-8?q?=C4=85?=\" =?x?\nSubject: later\n\nTreść\n",
         "Łukasz Żak <l@x.pl>|Zażółć \"ą\" =?x?|Treść\r\n|"},
        {"charsets as they are misused",
         "From: \xB3\xF3\xBF\nSubject: =?us-ascii?Q?=C5=82?= =?iso-8859-2?Q?=9C?= =?cp852?Q?=88?=\n"
         "Content-Type: text/plain; charset=\"iso-8859-1\"\n\n\xB9\x9C\xEA\n",
         "łóż|łśł|ąśę\r\n|"},
        {"ISO-8859-2's own bytes, windows-1250 under another name, UTF-16",
         "Content-Type: multipart/mixed; boundary=o\n\n--o\nContent-Type: text/plain; "
         "charset=ISO-8859-2\n\n\xB1\xB6\xBC\n--o\nContent-Type: text/plain; charset=utf-8\n\n"
         "Za\xBF\xF3\xB3\xE6\n--o\nContent-Type: text/plain; charset=utf-16le\n"
         "Content-Transfer-Encoding: base64\n\naABpAEIB\n",
         "||ąśź\r\nZażółć\r\nhił\r\n|"},
        {"control characters, blank alternatives, half a name, parentheses, no uuencode",
         "Subject: =?utf-8?Q?a=0D=0A=1BBcc?=\nContent-Type: multipart/mixed; boundary=o\n\n--o\n"
         "Content-Type: multipart/alternative; boundary=i\n\n--i\nContent-Transfer-Encoding: "
         "quoted-printable\n\n=20\n--i\nContent-Type: text/html\n\n<b>\n--o\n"
         "Content-Disposition: attachment; filename=FV (1).pdf; filename*=utf-8''\n\nx\n--o--\n",
         "|a Bcc|<b>\r\n|;FV (1).pdf"},
        {"names in pieces, in words, with percent codes, hostile and equal",
         "Content-Type: multipart/mixed; boundary=b c\n\n--b c\n" + file +
             "filename*1*=%C5%82.pdf; filename*0*=utf-8''za%C5%BC;\n"
             " filename=\"za.pdf\"\n\nQUI=\n--b c\n" +
             file + "filename=\"=?utf-8?Q?FV_1/;=C5=BC.pdf?=\"\n\nQUJD\n--b c\n" + file +
             "filename=\"../FV.pdf\"\n\nQQ\n--b c\n" + file +
             "filename=\"..\\\\fv.PDF\"\n\nQg=\n--b c--\n",
         "|||;zażł.pdf;FV 1__ż.pdf;__FV.pdf;__fv (2).PDF"},
        {"the plain one of alternatives, nested parts, an inner end that is missing, inline files",
         "Content-Type: multipart/mixed; boundary=\"o\"\n\npreamble\n--o\nContent-Type: "
         "multipart/alternative; boundary=i\n\n"
         "--i\nContent-Type: text/html\n\n<b>\n--i\n\nplain=20\n--o \nContent-Type: "
         "application/pdf\n\nPDF\n--o\n"
         "Content-Type: message/rfc822\n\nSubject: inner\n\n--i\n\n--o--\nepilogue\n--o\n\nlost",
         "||plain=20\r\n|;20261121123015.pdf;20261121123015.eml;20261121123015.txt"},
        {"no empty line behind headers; an inner multipart that never begins",
         "Content-Type: multipart/mixed; boundary=o\n--o\nContent-Type: multipart/related; "
         "boundary=zz\n\n--z\n\nPDF\n--o\nContent-Type: text/plain\nhi there\n--o--\n",
         "||hi there\r\n|;20261121123015.eml"},
        {"a multipart that never begins is saved whole",
         "Subject: s\nContent-Type: multipart/mixed; boundary=o\n\n--o--\n--o\n\nx\n--o--\n",
         "|s||;20261121123015.eml"},
        {"quoted-printable, Base64 with noise, uuencode; no end and bare line feeds",
         "Content-Type: multipart/mixed; boundary=z\n\n--z\nContent-Type: text/html; "
         "charset=utf-8\n"
         "Content-Transfer-Encoding: Quoted-Printable\n\n<p>=c5=\n=82 =zz  \n--z\n" +
             file +
             "filename=\"a\"\n\nQ!U\nJDQQ==QQ==\n"
             "--z\nContent-Transfer-Encoding: x-uuencode\nContent-Type: x/y; name=u\n\nbegin 644 "
             "u\n#0V%T\n`\nend\n",
         "||<p>ł =zz\r\n|;a;u"},
        {"nothing but noise is saved whole", "noise without a header\n", "|||;20261121123015.eml"},
    };
    for (const auto& row : cases) {
        test::ReadingBench bench;
        EXPECT_EQ(told(bench, bench.sent(row.lines)), row.expected) << row.story;
        // Bare line feeds, as boxes of old systems have them.
        test::ReadingBench other;
        const std::string bare = told(other, row.lines);
        EXPECT_EQ(base::remove_characters(base::from_utf8(bare), u"\r"),
                  base::remove_characters(base::from_utf8(row.expected), u"\r"))
            << row.story;
    }
}

TEST(ReceivedMessages, FilesHoldWhatWasSentAndLeaveThoseOfOthersAlone) {
    test::ReadingBench bench;
    std::filesystem::create_directory(bench.below(""));
    std::ofstream(bench.below("u")) << "another";
    const std::string bytes = bench.sent(
        "Content-Type: multipart/mixed; boundary=z\n\n--z\nContent-Type: x/y; "
        "name=a\nContent-Transfer-Encoding: base64\n\n"
        "Q!U\nJDQQ==QQ==\n-- \nThis was scanned\n--z\nContent-Type: x/y; "
        "name=v\nContent-Transfer-Encoding: x-uue\n\nas "
        "it "
        "is\n--z\nContent-Transfer-Encoding: x-uuencode\nContent-Type: x/y; "
        "name=u\n\nbegin 644 u\n#0V%T\n`\n"
        "end\n--z\nContent-Type: text/plain; name=n\n\nline\nend\n--z\nContent-Type: x/y; "
        "name=d\nContent-Transfer-Encoding: base64\n\n!!@@\n--z--\n");
    for (int times = 0; times < 2; ++times) {
        EXPECT_EQ(told(bench, bytes), "|||;a;v;u (2);n;d");
        const std::map<std::string, std::string> expected = {
            {"in/a", "ABCAA"},   {"in/v", "as it is"},    {"in/u", "another"},
            {"in/u (2)", "Cat"}, {"in/n", "line\r\nend"}, {"in/d", "!!@@"}};
        EXPECT_EQ(bench.files(), expected);
    }
}

TEST(ReceivedMessages, AreNotBlockedByNamesAndAreSavedWholeWhereThatIsAskedOrBetter) {
    test::ReadingBench bench;
    std::filesystem::create_directory(bench.below(""));
    // Nobody writes into this one.
    ASSERT_EQ(mkfifo(bench.below("f").c_str(), 0600), 0);
    for (int i = 2; i < 150; ++i)
        std::ofstream(bench.below("f (" + std::to_string(i) + ")")) << "another";
    const std::string part = "--z\r\nContent-Type: x/y; name=f\r\n\r\nx\r\n";
    std::string bytes = "Message-ID: <a/b@c>\r\nContent-Type: multipart/mixed; boundary=z\r\n\r\n";
    EXPECT_EQ(told(bench, bytes + part + part), "|||;20261121123015 f;20261121123015 f (2)");
    CMessage whole = bench.message();
    whole.take(base::bytes_of(bytes), bench.folder(), true);
    EXPECT_EQ(whole.Files(), u";a_b@c.eml");
    EXPECT_EQ(bench.files()["in/a_b@c.eml"], bytes);
    for (int i = 0; i <= 1000; ++i) bytes += part;
    EXPECT_EQ(told(bench, bytes), "|||;a_b@c (2).eml");
}

TEST(ReceivedMessages, TakeTimeInProportionToTheirSizeWhateverTheyAreMadeOf) {
    const auto repeated = [](const std::string& piece, int count) {
        std::string text;
        for (int i = 0; i < count; ++i) text += piece;
        return text;
    };
    std::string nested;
    for (int i = 0; i < 10'000; ++i) {
        const std::string name = std::to_string(i);
        nested +=
            "Content-Type: multipart/mixed; boundary=b" + name + "\r\n\r\n--b" + name + "\r\n";
    }
    const std::string head = "Content-Type: multipart/mixed; boundary=\"a\"\r\n\r\n";
    const std::string hyphens(1 << 20, '-');
    const std::string cases[] = {
        nested,
        head + repeated("--a\r\n", 100'000),
        head + repeated("--a\r\nContent-Type: x/y; name=n\r\n\r\nx\r\n", 9'000),
        "X: " + repeated("=?a?q?", 200'000) + "?=\r\n" + repeated(" =? ?q?x", 100'000) + "\r\n\r\n",
        "Content-Type: multipart/mixed; boundary=\"" + hyphens + "x\"\r\n\r\n" + hyphens + "\r\n" +
            hyphens + hyphens,
        "X: " + repeated(" \r\n", 300'000),
        "Content-Type: a/b" + repeated("; n*1*=%41", 100'000) + repeated("(", 100'000) + "\r\n\r\n",
        std::string("X: 1\r\n\r\n") + repeated(std::string(2, '\0') + "\n", 100'000),
    };
    for (const std::string& bytes : cases) {
        test::ReadingBench bench;
        const auto begin = std::chrono::steady_clock::now();
        bench.message().take(base::bytes_of(bytes), u"");
        bench.message().DodajMail(bench.code_page->to_text(base::bytes_of(bytes)), u"", true);
        EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10))
            << bytes.substr(0, 60);
    }
}

// Messages that nobody here wrote.
TEST(ReceivedMessages, OfAForeignCollectionGiveAResultAndStayInTheirFolder) {
    const std::filesystem::path collection = "/usr/lib/python3.11/test/test_email/data";
    if (!std::filesystem::exists(collection))
        GTEST_SKIP() << "libpython3.11-testsuite is not installed";
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(collection)) {
        if (entry.path().extension() != ".txt") continue;
        std::ifstream file(entry.path(), std::ios::binary);
        const std::string bytes{std::istreambuf_iterator<char>(file), {}};
        for (const bool literal : {false, true}) {
            test::ReadingBench bench;
            CMessage message = bench.message();
            std::string lines = bytes;
            std::erase(lines, '\r');
            const Text sent = bench.code_page->to_text(base::bytes_of(bench.sent(lines)));
            const bool taken = literal ? message.DodajMail(sent, bench.folder(), false) > 0
                                       : message.take(base::bytes_of(bytes), bench.folder());
            // One has no empty line, which only the literal reading needs; one has no header, and
            // four are multiparts that do not begin.
            const std::string refused = literal ? "35" : "17 19 25 31 41";
            EXPECT_EQ(taken, refused.find(entry.path().stem().string().substr(4)) == Text::npos)
                << entry.path() << literal;
            for (const auto& [name, content] : bench.files())
                EXPECT_TRUE(name.starts_with("in/")) << name;
        }
        ++count;
    }
    EXPECT_GE(count, 40);
}

// What a program that nobody here wrote makes of Polish names, in its two ways.
TEST(ReceivedMessages, OfPythonComeOutAsItWasTold) {
    const std::string script =
        "import sys,email.policy as p\nfrom email.message import EmailMessage\n"
        "m=EmailMessage(policy=p.SMTP)\nm['From']='Łukasz Żak <l@x.pl>'\nm['Subject']='Zażółć "
        "gęślą jaźń '*9\n"
        "m.set_content('Żółw\\n',charset='iso-8859-2')\nm.add_alternative('<b>Ż</"
        "b>',subtype='html')\n"
        "m.add_attachment(bytes(range(256))*9,maintype='a',subtype='b',filename='Zażółć \"gęślą\" "
        "'*5+'.pdf')\n"
        "m.add_attachment(EmailMessage(policy=p.SMTP))\nsys.stdout.buffer.write(m.as_bytes())\n";
    FILE* pipe = popen(("PYTHONUTF8=1 python3 - <<'END'\n" + script + "END").c_str(), "r");
    std::string bytes;
    for (int c = fgetc(pipe); c != EOF; c = fgetc(pipe)) bytes += static_cast<char>(c);
    ASSERT_EQ(pclose(pipe), 0);
    test::ReadingBench bench;
    std::string subject;
    std::string name;
    for (int i = 0; i < 9; ++i) subject += "Zażółć gęślą jaźń ";
    for (int i = 0; i < 5; ++i) name += "Zażółć _gęślą_ ";
    EXPECT_EQ(told(bench, bytes), "Łukasz Żak <l@x.pl>|" + subject.substr(0, subject.size() - 1) +
                                      "|Żółw\r\n|;" + name + ".pdf;20261121123015.eml");
    std::string content;
    for (int i = 0; i < 9 * 256; ++i) content += static_cast<char>(i);
    EXPECT_EQ(bench.files()["in/" + name + ".pdf"], content);
}

TEST(CMessages, AreFoundByPlaceAndByKey) {
    test::ReadingBench bench;
    CMessages messages;
    const auto first = std::make_shared<CMessage>(bench.message());
    const auto second = std::make_shared<CMessage>(bench.message());
    messages.Add(first, u"a");
    messages.Add(second, u"A");
    EXPECT_EQ(messages.Item(1), first);
    EXPECT_EQ(messages.Item(u"a"), second);
    messages.Remove(u"a");
    EXPECT_EQ(messages.Item(u"a"), first);
    EXPECT_THROW(messages.Item(2), base::AutomationError);
}

}  // namespace
}  // namespace tavrix::mail
