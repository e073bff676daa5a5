#include "base/text.h"

#include <gtest/gtest.h>

namespace tavrix::base {
namespace {

TEST(Utf8, GivesBackEveryKindOfCharacter) {
    const Text text(u"a\0ł€\U0001F9FEż", 7);
    EXPECT_EQ(from_utf8(to_utf8(text)), text);
    EXPECT_EQ(to_utf8(u"łódź €"), "\xC5\x82\xC3\xB3\x64\xC5\xBA \xE2\x82\xAC");
}

// Unicode 15, section 3.9, table 3-8: one replacement for each maximal subpart.
TEST(Utf8, ReplacesWhatIsMalformed) {
    EXPECT_EQ(from_utf8("\x61\xF1\x80\x80\xE1\x80\xC2\x62\x80\x63\x80\xBF\x64"),
              u"a\uFFFD\uFFFD\uFFFDb\uFFFDc\uFFFD\uFFFDd");
    EXPECT_EQ(from_utf8("\xC0\xAF"), u"\uFFFD\uFFFD") << "overlong slash";
    EXPECT_EQ(from_utf8("\xED\xA0\x80"), u"\uFFFD\uFFFD\uFFFD") << "surrogate";
    EXPECT_EQ(from_utf8("\xF4\x90\x80\x80"), u"\uFFFD\uFFFD\uFFFD\uFFFD") << "above U+10FFFF";
    EXPECT_EQ(from_utf8("\xE2\x82"), u"\uFFFD") << "cut off";
    const Text lone = {0xD83E, u'x', 0xDDFE};
    EXPECT_EQ(to_utf8(lone), "\xEF\xBF\xBDx\xEF\xBF\xBD");
}

TEST(LetterCase, KnowsPolishLettersAndNothingBetweenTheBlocks) {
    EXPECT_TRUE(equal_case_blind(u"ZAŻÓŁĆ GĘŚLĄ JAŹŃ", u"zażółć gęślą jaźń"));
    EXPECT_FALSE(equal_case_blind(u"×", u"÷"));
    EXPECT_FALSE(equal_case_blind(u"@[", u"`{"));
    EXPECT_EQ(find_case_blind(u"Nagłówek: TREŚĆ", u"treść"), 10u);
    EXPECT_EQ(find_case_blind(u"token TOKEN", u"token", 1), 6u);
    const Text lower_letters = u"ąćęłńóśźżýőš";
    for (const char16_t c : lower_letters) EXPECT_EQ(lower(upper(c)), c);
}

TEST(Pieces, KeepEmptyOnes) {
    EXPECT_EQ(split(u"a||b|", u'|'), (std::vector<Text>{u"a", u"", u"b", u""}));
    EXPECT_EQ(replace_all(u"\r\n\r\r\n", u"\r\n", u"\n"), u"\n\r\n");
    EXPECT_EQ(trim(u"  a b \t"), u"a b \t");
    EXPECT_EQ(trim(u"   "), u"");
}

}  // namespace
}  // namespace tavrix::base
