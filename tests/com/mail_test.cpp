// Mail as hosts read it, and the system's own Base64 beside ours.

#include <cmath>
#include <filesystem>

#include "base/error.h"
#include "mail/literal/crypto_base64.h"
#include "tests/com/late_host.h"
#include "windows/bstr.h"

// Behind what it stands on.
#include <wincrypt.h>

namespace tavrix::test {
namespace {

TEST(Mail, DodajMailGivesTextsAndFilesToALateBoundHost) {
    const base::Text folder = beside_program(u"poczta\\");
    std::filesystem::remove_all(std::u16string(folder));
    const auto message = create(u"Tavrix.CMessage");
    Variant text(
        u"From: Ł <a@b>\r\nMessage-ID: <7.x@y>\r\nContent-Type: multipart/mixed;\r\n "
        u"boundary=\"abc\"\r\n\r\n"
        u"--abc\r\nContent-Type: text/plain\r\n\r\nZa=BF=F3=B3=E6\r\n"
        u"--abc\r\nContent-Type: text/xml; name=\"..\\żółw.xml\"\r\n\r\nQUJD\r\n--abc\r\n");
    Variant kept_in(folder);
    VARIANT_BOOL only_attachments = VARIANT_FALSE;
    EXPECT_EQ(answer(message, u"DodajMail",
                     {by_reference(text), by_reference(kept_in),
                      by_reference(&only_attachments, VT_BOOL)}),
              "long 2");
    const auto property = [&](const char16_t* name) {
        return written(invoke(message, name, DISPATCH_PROPERTYGET));
    };
    EXPECT_EQ(property(u"From"), "text Ł <a@b>");
    EXPECT_EQ(property(u"MessageText"), "text Zażółć\r\n");
    EXPECT_EQ(property(u"Files"), "text ;7x@y\\__żółw.xml");
    EXPECT_EQ(std::filesystem::file_size(std::u16string(folder + u"7x@y\\__żółw.xml")), 3u);
    // In the code page, with a line end behind.
    EXPECT_EQ(std::filesystem::file_size(std::u16string(folder + u"7x@y.eml")),
              base::Text(windows::view_of(text.get().bstrVal)).size() + 2);
    std::filesystem::remove_all(std::u16string(folder));
}

// The system's answer and ours to every text of up to six of these characters.
TEST(Mail, Base64IsReadAsTheSystemReadsIt) {
    constexpr base::TextView characters = u"VQ= -";
    const mail::CryptoBase64 codec{ports::SystemVersion{}};
    for (int length = 1; length <= 6; ++length) {
        const auto count = static_cast<int>(std::pow(characters.size(), length));
        for (int number = 0; number < count; ++number) {
            base::Text text;
            for (int rest = number, i = 0; i < length; ++i, rest /= 5) text += characters[rest % 5];
            base::Bytes expected(16);
            DWORD size = 16;
            const bool decodes =
                CryptStringToBinaryW(windows::wide(text), static_cast<DWORD>(length),
                                     CRYPT_STRING_BASE64, expected.data(), &size, nullptr, nullptr);
            expected.resize(decodes ? size : 0);
            try {
                ASSERT_EQ(codec.Decode(text), expected) << base::to_utf8(text);
                ASSERT_TRUE(decodes) << base::to_utf8(text);
            } catch (const base::AutomationError&) {
                ASSERT_FALSE(decodes) << base::to_utf8(text);
            }
        }
    }
}

}  // namespace
}  // namespace tavrix::test
