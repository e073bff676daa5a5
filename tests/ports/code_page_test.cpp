#include "ports/code_page.h"

#include <gtest/gtest.h>

#include "tests/support/code_page.h"

namespace tavrix::ports {
namespace {

base::Bytes every_byte() {
    base::Bytes bytes(256);
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<std::uint8_t>(i);
    return bytes;
}

TEST(BytesOnePerCharacter, ComeBackFromTheCodePageAndFromLatin1) {
    const auto code_page = test::system_code_page();
    const base::Bytes bytes = every_byte();
    EXPECT_EQ(bytes_one_per_character(*code_page, code_page->to_text(bytes)), bytes);
    const base::Text latin_1(bytes.begin(), bytes.end());
    EXPECT_EQ(bytes_one_per_character(*code_page, latin_1), bytes);
}

TEST(BytesOnePerCharacter, WhatIsNoByteBecomesAQuestionMark) {
    const auto code_page = test::system_code_page();
    EXPECT_EQ(bytes_one_per_character(*code_page, u"\u0416\u2603\uFFFD"),
              (base::Bytes{'?', '?', '?'}));
}

TEST(CodePage1250, KnowsThePolishLettersAndReplacesTheRest) {
    const auto code_page = test::system_code_page();
    EXPECT_EQ(code_page->to_bytes(u"ĄąĆćĘęŁłŃńÓóŚśŹźŻż€"),
              (base::Bytes{0xA5, 0xB9, 0xC6, 0xE6, 0xCA, 0xEA, 0xA3, 0xB3, 0xD1, 0xF1, 0xD3, 0xF3,
                           0x8C, 0x9C, 0x8F, 0x9F, 0xAF, 0xBF, 0x80}));
    EXPECT_EQ(code_page->to_bytes(u"\u4E00\u0416"), (base::Bytes{'?', '?'}));
    EXPECT_EQ(code_page->to_text(base::Bytes{0xEF, 0xBB, 0xBF}), u"ď»ż");
}

}  // namespace
}  // namespace tavrix::ports
