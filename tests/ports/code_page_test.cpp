#include "ports/code_page.h"

#include <gtest/gtest.h>

#include <numeric>

#include "base/error.h"
#include "tests/support/code_page.h"

namespace tavrix::ports {
namespace {

const auto code_page = test::system_code_page();

TEST(BytesOnePerCharacter, ComeBackFromTheCodePageAndFromLatin1) {
    base::Bytes bytes(256);
    std::iota(bytes.begin(), bytes.end(), std::uint8_t{0});
    EXPECT_EQ(bytes_one_per_character(*code_page, code_page->to_text(bytes)), bytes);
    const base::Text latin_1(bytes.begin(), bytes.end());
    EXPECT_EQ(bytes_one_per_character(*code_page, latin_1), bytes);
    for (const base::TextView no_bytes : {u"a\u0416", u"\uFFFD", u"\uFEFF<a/>"}) {
        EXPECT_THROW(bytes_one_per_character(*code_page, no_bytes), base::AutomationError);
    }
}

TEST(CodePage1250, KnowsThePolishLettersAndReplacesTheRest) {
    EXPECT_EQ(base::chars_of(code_page->to_bytes(u"ĄąĆćĘęŁłŃńÓóŚśŹźŻż€\u4E00\u0416")),
              "\xA5\xB9\xC6\xE6\xCA\xEA\xA3\xB3\xD1\xF1\xD3\xF3\x8C\x9C\x8F\x9F\xAF\xBF\x80??");
}

}  // namespace
}  // namespace tavrix::ports
