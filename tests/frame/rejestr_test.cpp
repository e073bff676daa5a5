#include "frame/rejestr.h"

#include <gtest/gtest.h>

#include "tests/support/code_page.h"
#include "tests/support/fake_registry.h"

namespace tavrix::frame {
namespace {

using ports::RegistryRoot;
using test::FakeRegistry;

constexpr std::uint32_t none = 0;
constexpr std::uint32_t text = 1;
constexpr std::uint32_t binary = 3;
constexpr std::uint32_t multiple_texts = 7;

class RejestrTest : public testing::Test {
  protected:
    FakeRegistry registry;
    std::unique_ptr<ports::CodePage> code_page = test::system_code_page();
    Rejestr rejestr{registry, *code_page};

    base::Text stored(std::uint32_t type, std::string_view bytes) {
        registry.put(RegistryRoot::local_machine, "Key", "Name", type, bytes);
        return rejestr.RegGetValue(2, u"Key", u"Name");
    }
};

TEST_F(RejestrTest, KnowsFourRootsAndTouchesTheRegistryForNoOther) {
    constexpr RegistryRoot roots[] = {RegistryRoot::classes_root, RegistryRoot::current_user,
                                      RegistryRoot::local_machine, RegistryRoot::users};
    for (std::uint8_t i = 0; i < 4; ++i) {
        registry.put(roots[i], "Key", "Name", text, std::string("root ") + char('0' + i) + '\0');
        EXPECT_EQ(rejestr.RegGetValue(i, u"Key", u"Name"), u"root " + base::to_decimal(i));
    }
    registry.opened = 0;
    for (const std::uint8_t other : {std::uint8_t{4}, std::uint8_t{255}}) {
        EXPECT_EQ(rejestr.RegGetValue(other, u"Key", u"Name"), u"");
    }
    EXPECT_EQ(registry.opened, 0);
}

TEST_F(RejestrTest, GivesNumbersAsSignedDecimals) {
    EXPECT_EQ(stored(ports::registry_dword, {"\x2A\0\0\0", 4}), u"42");
    EXPECT_EQ(stored(ports::registry_dword, "\xFF\xFF\xFF\xFF"), u"-1");
    EXPECT_EQ(stored(ports::registry_dword, {"\0\0\0\x80", 4}), u"-2147483648");
    EXPECT_EQ(stored(ports::registry_dword, {"\0\0\0\0", 4}), u"0");
    // Nothing stops a program from storing another length under the type.
    EXPECT_EQ(stored(ports::registry_dword, "\x01\x02"), u"513");
    EXPECT_EQ(stored(ports::registry_dword, "\x01\x02\x03\x04\x05"), u"");
}

TEST_F(RejestrTest, CutsTheLastByteOfEverythingElse) {
    EXPECT_EQ(stored(text, {"abc\0", 4}), u"abc");
    EXPECT_EQ(stored(ports::registry_expandable_text, {"%TEMP%\0", 7}), u"%TEMP%");
    EXPECT_EQ(stored(multiple_texts, {"a\0b\0\0", 5}), base::Text(u"a\0b\0", 4));
    EXPECT_EQ(stored(binary, "\x01\x41\xB9"), u"\x01\x41");
    EXPECT_EQ(stored(none, "xy"), u"x");
    EXPECT_EQ(stored(text, "abc"), u"ab") << "stored without its zero";
    EXPECT_EQ(stored(text, {"\0", 1}), u"");
    EXPECT_EQ(stored(text, ""), u"");
}

TEST_F(RejestrTest, Takes255BytesAndNoMore) {
    EXPECT_EQ(stored(text, std::string(254, 'x') + '\0'), base::Text(254, u'x'));
    EXPECT_EQ(stored(text, std::string(255, 'x') + '\0'), u"");
    EXPECT_EQ(stored(binary, std::string(255, 'x')), base::Text(254, u'x'));
    EXPECT_EQ(stored(binary, std::string(256, 'x')), u"");
}

TEST_F(RejestrTest, WritesNamesAndTextsInTheCodePage) {
    // "Zażółć" in code page 1250.
    const std::string polish = "Za\xBF\xF3\xB3\xE6";
    registry.put(RegistryRoot::current_user, polish + "\\" + polish, polish, text, polish + '\0');
    EXPECT_EQ(rejestr.RegGetValue(1, u"Zażółć\\Zażółć", u"Zażółć"), u"Zażółć");
}

TEST_F(RejestrTest, GivesTheEmptyTextForWhatIsNotThere) {
    EXPECT_EQ(rejestr.RegGetValue(2, u"Key", u"Name"), u"");
    stored(text, {"abc\0", 4});
    EXPECT_EQ(rejestr.RegGetValue(2, u"Key", u"Other"), u"");
    EXPECT_EQ(rejestr.RegGetValue(1, u"Key", u"Name"), u"") << "another root";
    registry.broken = true;
    EXPECT_EQ(rejestr.RegGetValue(2, u"Key", u"Name"), u"") << "whatever the registry throws";
}

TEST_F(RejestrTest, ClosesEveryKey) {
    stored(text, {"abc\0", 4});
    rejestr.RegGetValue(2, u"Key", u"Other");
    EXPECT_EQ(registry.open_now, 0);
    EXPECT_EQ(registry.opened, 2);
}

}  // namespace
}  // namespace tavrix::frame
