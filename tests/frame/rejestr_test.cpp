#include "frame/rejestr.h"

#include <gtest/gtest.h>

#include "tests/support/code_page.h"
#include "tests/support/fake_registry.h"

namespace tavrix::frame {
namespace {

using ports::RegistryRoot;
using test::FakeRegistry;

class RejestrTest : public testing::Test {
  protected:
    static constexpr std::uint32_t text = 1;
    FakeRegistry registry;
    std::unique_ptr<ports::CodePage> code_page = test::system_code_page();
    Rejestr rejestr{registry, *code_page};
};

TEST_F(RejestrTest, KnowsFourRootsAndTouchesTheRegistryForNoOther) {
    constexpr RegistryRoot roots[] = {RegistryRoot::classes_root, RegistryRoot::current_user,
                                      RegistryRoot::local_machine, RegistryRoot::users};
    for (std::uint8_t i = 0; i < 4; ++i) {
        registry.put(roots[i], "Key", "Name", text, std::string("root ") + char('0' + i) + '\0');
        EXPECT_EQ(rejestr.RegGetValue(i, u"Key", u"Name"), u"root " + base::to_decimal(i));
    }
    EXPECT_EQ(rejestr.RegGetValue(4, u"Key", u"Name"), u"");
    EXPECT_EQ(registry.opened, 4);
}

// A number is a signed decimal; everything else loses its last byte, and 255 bytes are read at
// most.
TEST_F(RejestrTest, ReadsEachTypeAsHostsHaveAlwaysGotIt) {
    constexpr std::uint32_t binary = 3;
    const auto with_zero = [](std::size_t size) { return std::string(size, 'x') + '\0'; };
    const std::tuple<std::uint32_t, std::string, base::Text> values[] = {
        {ports::registry_dword, {"\x2A\0\0\0", 4}, u"42"},
        {ports::registry_dword, {"\0\0\0\x80", 4}, u"-2147483648"},
        // Nothing stops a program from storing another length under the type.
        {ports::registry_dword, "\x01\x02", u"513"},
        {ports::registry_dword, "\x01\x02\x03\x04\x05", u""},
        {ports::registry_expandable_text, {"%TEMP%\0", 7}, u"%TEMP%"},
        {binary, "\x01\x41\xB9", u"\x01\x41"},
        {text, "abc", u"ab"},
        {text, {"a\0b\0\0", 5}, base::Text(u"a\0b\0", 4)},
        {text, "", u""},
        {text, with_zero(254), base::Text(254, u'x')},
        {text, with_zero(255), u""},
    };
    for (const auto& [type, bytes, expected] : values) {
        registry.put(RegistryRoot::local_machine, "Key", "Name", type, bytes);
        EXPECT_EQ(rejestr.RegGetValue(2, u"Key", u"Name"), expected) << type << ' ' << bytes;
    }
}

TEST_F(RejestrTest, NamesAreInTheCodePageAndWhatIsNotThereIsEmpty) {
    // "Zażółć" in code page 1250.
    const std::string polish = "Za\xBF\xF3\xB3\xE6";
    registry.put(RegistryRoot::current_user, polish + "\\" + polish, polish, text, polish + '\0');
    EXPECT_EQ(rejestr.RegGetValue(1, u"Zażółć\\Zażółć", u"Zażółć"), u"Zażółć");
    EXPECT_EQ(rejestr.RegGetValue(1, u"Zażółć\\Zażółć", u"Other"), u"");
    EXPECT_EQ(rejestr.RegGetValue(2, u"Zażółć\\Zażółć", u"Zażółć"), u"");
    EXPECT_EQ(registry.open_now, 0) << "every key is closed";
    registry.broken = true;
    EXPECT_EQ(rejestr.RegGetValue(1, u"Zażółć\\Zażółć", u"Zażółć"), u"");
}

}  // namespace
}  // namespace tavrix::frame
