// CMessage.DodajMail as hosts know it, quirks included.

#include <gtest/gtest.h>

#include <random>
#include <regex>

#include "base/error.h"
#include "mail/literal/crypto_base64.h"
#include "mail/literal/polish_letters.h"
#include "tests/mail/reading_bench.h"

namespace tavrix::mail {
namespace {

using base::Text;
using Name = MessageProperty;

constexpr const char* mixed = "Subject: FV\nContent-Type: multipart/mixed;\n boundary=\"abc\"\n\n";
constexpr const char* pdf = "Content-Type: application/pdf; name=\"a.pdf\"\n\n";

// "result|files|text" of a message of `parts` under a header that names the boundary abc.
std::string told(test::ReadingBench& bench, const std::string& lines, const Text& folder) {
    CMessage message = bench.message();
    const auto result = message.DodajMail(base::from_utf8(bench.sent(lines)), folder, true);
    return std::to_string(result) + "|" + base::to_utf8(message.Files()) + "|" +
           base::to_utf8(message.text<Name::MessageText>());
}

TEST(DodajMail, ReadsPartsToTheLetterAndUnderTheOtherProfileForWhatTheyAre) {
    const std::string text = "Content-Type: text/plain; charset=utf-8\n\n";
    const struct {
        const char* story;
        std::string lines;
        std::string classic;
        std::string current;
    } cases[] = {
        {"no empty line", "Subject: x\nTo: y\n", "0||", "0||"},
        {"no boundary", "Subject: x\n\nTekst\n", "1||", "1||"},
        {"the closing line is text, or an attachment's Base64",
         mixed + ("--abc\n" + text) + "Za=C5=BC=F3\n--abc--\n", "1||Za=C5źó\r\n--abc--\r\n\r\n",
         "1||Za=C5=BC=F3\r\n"},
        {"letters of UTF-8 out of quoted-printable",
         mixed + ("--abc\nContent-Transfer-Encoding: quoted-printable\n" + text) +
             "Za=C5=BC=C3=\n=B3=C5=82=C4=87\n--abc\n",
         "1||Za=C5ź=C3=\r\nłłć\r\n", "1||Zażółć\r\n"},
        {"attachments count, and the text between them",
         mixed + ("--abc\n" + std::string(pdf)) + "\nQUJD\nRA==\n--abc\n" + text + "A\n--abc\n" +
             "Content-Type: application/zip;\n\tname=x\nContent-Disposition: attachment;\n" +
             "\tfilename=\"b/c.zip\"\nContent-Transfer-Encoding: base64\nX-A: 1\n\nQUI=\n--abc--\n",
         "3|;a.pdf;b_c.zip|A\r\n", "3|;a.pdf;b_c.zip|A\r\n"},
        {"Base64 that fails ends the reading",
         mixed + ("--abc\n" + std::string(pdf)) + "QUJD\n--abc--\n", "1||", "2|;a.pdf|"},
        {"other types are left out",
         mixed + std::string("--abc\nContent-Type: image/png; name=\"a.png\"\n\nQUJD\n--abc\n") +
             text + "B\n--abc\n",
         "1||B\r\n", "1||B\r\n"},
        {"a name without quotation marks loses its ends",
         mixed + std::string("--abc\nContent-Type: text/xml; name=FV.xml\n\nQUJD\n--abc\n"),
         "2|;V.xm|", "2|;FV.xml|"},
        {"no usable name",
         mixed + std::string("--abc\nContent-Type: text/xml; name=\"\"\n\nQUJD\n--abc\n"),
         "2|;20261121123015|", "2|;20261121123015|"},
        {"an unquoted boundary",
         "Content-Type: multipart/mixed; boundary=abc\n\n--abc\n" + text + "C\n--abc--\n", "1||",
         "1||C\r\n"},
        {"the boundaries of common programs count without any in the header",
         "Subject: x\n\n------=_Next\n" + text + "D\n--_----------=1\n" + text + "E\n--0__x\n",
         "1||D\r\nE\r\n", "1||D\r\nE\r\n"},
        {"the boundary with its quotation mark", mixed + ("--abc\"\n" + text) + "A\n--abc\"\n",
         "1||A\r\n", "1||A\r\n"},
        {"the boundary within five hyphens, a hyphen behind it",
         mixed + ("-----xabc-y\n" + text) + "A\n-----abc\n--abc\n", "1||A\r\n-----abc\r\n",
         "1||A\r\n-----abc\r\n"},
        {"another parameter behind the boundary",
         "Content-Type: a/b; boundary=\"abc\"; type=\"x\"\n\n--abc\n" + text + "A\n--abc--\n",
         "1||", "1||A\r\n"},
        {"and behind one without quotation marks",
         "Content-Type: a/b; boundary=abc; type=x\n\n--abc\n" + text + "A\n--abc--\n", "1||",
         "1||A\r\n"},
        {"the name of an attachment comes before any later one",
         mixed + std::string("--abc\nContent-Disposition: attachment; filename=\"a\"\n"
                             "Content-Type: application/soap+xml; name=\"b\"\n\nQUJD\n--abc\n"),
         "2|;a|", "2|;a|"},
        {"an empty boundary is one", "Subject: x\n\n-----BEGIN PGP\n" + text + "F\n--\n",
         "1||F\r\n", "1||"},
    };
    for (const auto& row : cases) {
        for (const bool classic : {true, false}) {
            SCOPED_TRACE(std::string(row.story) + (classic ? ", classic" : ", current"));
            test::ReadingBench bench;
            bench.profile = classic ? base::Profile::classic : base::Profile::current;
            const std::string expected = classic ? row.classic : row.current;
            EXPECT_EQ(told(bench, row.lines, bench.folder()), expected);
            // Without a folder there are no files, and everything else is the same.
            const std::regex between("\\|.*?\\|");
            EXPECT_EQ(told(bench, row.lines, u""), std::regex_replace(expected, between, "||"));
        }
    }
}

TEST(DodajMail, SavesTheMessageAndItsFilesInsideTheFolderWithTheOldEndOfLongerFiles) {
    test::ReadingBench bench;
    const std::string lines =
        std::string("Received: one\nReceived: two\n fw: three\nMessage-ID: <1.a/..\\b:c@d>\n") +
        mixed + "--abc\nContent-Type: text/xml; name=\"..\\..\\Łódź.xml\"\n\nQUJD\n--abc\n";
    const Text sent = base::from_utf8(bench.sent(lines));
    CMessage message = bench.message();
    EXPECT_EQ(message.DodajMail(sent, bench.folder(), false), 2);
    EXPECT_EQ(message.text<Name::Received>(), u"two");
    EXPECT_EQ(message.Files(), u";1a__b_c@d\\____Łódź.xml");
    const std::string saved = "in/1a__b_c@d/____Łódź.xml";
    const auto code_paged = bench.code_page->to_bytes(sent + u"\r\n");
    const std::map<std::string, std::string> expected = {
        {"in/1a__b_c@d.eml", std::string(base::chars_of(code_paged))}, {saved, "ABC"}};
    EXPECT_EQ(bench.files(), expected);

    std::ofstream(bench.below("1a__b_c@d/____Łódź.xml")) << "12345";
    std::ofstream(bench.below("1a__b_c@d.eml")) << std::string(1000, 'x');
    EXPECT_EQ(bench.message().DodajMail(sent, bench.folder(), false), 2);
    EXPECT_EQ(bench.files()[saved], "ABC45");
    EXPECT_EQ(bench.files()["in/1a__b_c@d.eml"], expected.begin()->second);
    // A folder of the file's name: the writing fails, the parts until then count.
    std::filesystem::create_directory(bench.below("a.pdf"));
    EXPECT_EQ(told(bench, mixed + ("--abc\n" + std::string(pdf)) + "QUJD\n--abc\n", bench.folder()),
              "1|;a.pdf|");
}

TEST(DodajMail, FillsEachPropertyFromItsOwnField) {
    test::ReadingBench bench;
    CMessage message = bench.message();
    const Text headers = base::from_utf8(bench.sent(
        "Return-Path: a\nReceived: b\nDate: c\nMessage-ID: d\nTo: e\nFrom: f\nSubject: g\n"
        "Reply-To: h\nSender: i\nCC: j\nBCC: k\nIn-Reply-To: l\nReferences: m\nKeywords: n\n"
        "Comments: o\nEncrypted: p"));
    const Text body = u"--0__\r\nContent-Type: text/html\r\n\r\n<b>";
    EXPECT_EQ(message.DodajMail(headers + u"\r\n\r\n" + body, u"", true), 1);
    EXPECT_EQ(message.text<Name::ReturnPath>() + message.text<Name::Received>() +
                  message.text<Name::SendDate>() + message.text<Name::MessageID>() +
                  message.text<Name::MessageTo>() + message.text<Name::From>() +
                  message.text<Name::Subject>() + message.text<Name::ReplyTo>() +
                  message.text<Name::sender>() + message.text<Name::CC>() +
                  message.text<Name::BCC>() + message.text<Name::InReplyTo>() +
                  message.text<Name::References>() + message.text<Name::Keywords>() +
                  message.text<Name::Comments>() + message.text<Name::Encrypted>(),
              u"abcdefghijklmnop");
    EXPECT_EQ(message.text<Name::Headers>(), headers);
    EXPECT_EQ(message.text<Name::MessageBody>(), body);
    EXPECT_EQ(message.text<Name::MessageText>(), u"<b>\r\n");
    EXPECT_EQ(message.Size(), 5);
}

// The list as it once was: one replacement after the other, each over the whole text.
Text replaced_one_by_one(Text text) {
    const char* list[][2] = {
        {"=20", " "},    {"=A1", "Ą"}, {"=C4=84", "Ą"}, {"=B1", "ą"}, {"=C4=85", "ą"}, {"=C6", "Ć"},
        {"=C4=86", "Ć"}, {"=E6", "ć"}, {"=C4=87", "ć"}, {"=CA", "Ę"}, {"=C4=98", "Ę"}, {"=EA", "ę"},
        {"=C4=99", "ę"}, {"=A3", "Ł"}, {"=C5=81", "Ł"}, {"=B3", "ł"}, {"=C5=82", "ł"}, {"=D1", "Ń"},
        {"=C5=83", "Ń"}, {"=F1", "ń"}, {"=C5=84", "ń"}, {"=B6", "Ś"}, {"=C5=9a", "Ś"}, {"=A6", "ś"},
        {"=C5=9b", "ś"}, {"=D3", "Ó"}, {"=C6=a0", "Ó"}, {"=F3", "ó"}, {"=C6=a1", "ó"}, {"=AC", "Ź"},
        {"=C5=b9", "Ź"}, {"=BC", "ź"}, {"=C5=ba", "ź"}, {"=AF", "Ż"}, {"=C5=bb", "Ż"}, {"=BF", "ż"},
        {"=C5=bc", "ż"}};
    for (const auto& [from, to] : list) {
        const Text code = base::from_utf8(from);
        for (std::size_t at = 0; (at = base::find_case_blind(text, code, at)) != Text::npos;) {
            text.replace(at, code.size(), base::from_utf8(to));
            ++at;
        }
    }
    return text;
}

TEST(DodajMail, ReplacesInOnePassWhatTheOrderedListReplaces) {
    EXPECT_EQ(with_polish_letters(u"Zaż=F3=B3=E6 =C5=BC=B6=c6=A1=C4=84=\r\n=G0="),
              u"Zażółć =C5źŚĆĄĄ=\r\n=G0=");
    std::mt19937 random{7};
    const Text letters = u"=====CcC45689AaBbEF0123Dż";
    for (int round = 0; round < 20'000; ++round) {
        Text text;
        for (auto length = random() % 40; length > 0; --length)
            text += letters[random() % letters.size()];
        ASSERT_EQ(with_polish_letters(text), replaced_one_by_one(text)) << base::to_utf8(text);
    }
}

std::string raised(auto action) {
    try {
        return action();
    } catch (const base::AutomationError& error) {
        char number[16];
        std::snprintf(number, sizeof number, "%X ", static_cast<unsigned>(error.number()));
        return number + base::to_utf8(error.source() + u": " + error.description());
    }
}

TEST(CryptoBase64, DecodesAndEncodesAsTheSystemDoes) {
    const std::string fails = "8004E304 CryptoBase64.Decode: CryptStringToBinary failed, error 13";
    // Seen of CryptStringToBinaryW; tests/com asks the system itself.
    const char* decoded[][2] = {
        {"", ""},          {"QUJD", "ABC"},   {"QU JD\r\nRA= =", "ABCD"}, {"QUI", "AB"},
        {"Q", "@"},        {"Q===", "@"},     {"QQ==QUJD", "A"},          {"QUJD=--abc--", "ABC"},
        {"=x", ""},        {"QQ=", nullptr},  {"Q==", nullptr},           {"QUJD--abc--", nullptr},
        {"QU-D", nullptr}, {"QQ=ą=", nullptr}};
    const CryptoBase64 codec{ports::SystemVersion{}};
    for (const auto& [text, bytes] : decoded) {
        EXPECT_EQ(raised([&] {
                      return std::string(base::chars_of(codec.Decode(base::from_utf8(text))));
                  }),
                  bytes == nullptr ? fails : bytes)
            << text;
    }
    const base::Bytes bytes(50, 'A');
    const std::string first(64, 'x');
    const struct {
        ports::SystemVersion system;
        std::int32_t format;
        std::string expected;
    } encoded[] = {
        {{}, 0, "0 64\r\n4\r\n"},
        {{}, 1, "1 68"},
        {{}, 2, "2 64\n4\n"},
        {{}, 7, "0 64\r\n4\r\n"},
        {{0, 2, 5, 0},
         1,
         "8004E302 CryptoBase64.Base64Format: This format is only supported in Windows XP/2003 and "
         "later"},
        {{0, 2, 5, 1},
         2,
         "8004E303 CryptoBase64.Base64Format: This format is only supported in Windows Vista/2008 "
         "and later"},
        {{5, 0, 0, 0}, 0, "8004E300 CryptoBase64 Initialize: GetVersionEx failed, error 5"},
        {{0, 1, 4, 10},
         0,
         "8004E301 CryptoBase64 Initialize: CryptoAPI is only available on NT-based OSs"},
    };
    for (const auto& row : encoded) {
        EXPECT_EQ(raised([&] {
                      CryptoBase64 own(row.system);
                      own.set_Base64Format(row.format);
                      // Each run of letters by its length.
                      std::string text = std::to_string(own.Base64Format()) + " ";
                      int run = 0;
                      for (const char16_t c : own.Encode(bytes) + u'\0') {
                          if (c > u' ') {
                              ++run;
                              continue;
                          }
                          if (run > 0) text += std::to_string(run);
                          run = 0;
                          if (c != 0) text += static_cast<char>(c);
                      }
                      return text;
                  }),
                  row.expected);
    }
}

}  // namespace
}  // namespace tavrix::mail
