#include <gtest/gtest.h>

#include "barcode/code128.h"
#include "barcode/ean.h"
#include "base/windows_1250.h"

namespace tavrix::barcode {
namespace {

using base::TextView;

TEST(Ean, symbols_of_published_numbers_and_none_of_other_texts) {
    const std::tuple<base::Text (*)(TextView), TextView, TextView> cases[] = {
        {encode_ean13, u"590123412345", u"5JKLCDO*bcdefh+"},
        {encode_ean8, u"1234567", u":BCDE*fgha+"},
        // The worked example of the GS1 General Specifications, 5.2.2.2: 86104 has the
        // check value 3.
        {encode_add_on, u"86104", u"[S\\G\\B\\A\\O"},
        {encode_add_on, u"03", u"[K\\N"}};
    for (const auto& [encode, text, symbol] : cases) EXPECT_EQ(encode(text), symbol);
    for (const TextView text :
         {u"", u"1", u"123", u"1a", u"1234x", u"123456", u"123456a", u"12345678", u"12345６7",
          u"59012341234x", u"590123412 45", u"1234567890123"}) {
        for (const auto encode : {encode_ean8, encode_ean13, encode_add_on}) {
            EXPECT_EQ(encode(text), u"") << base::to_utf8(text);
        }
    }
    EXPECT_EQ(binary_byte(133), u"10000101");
}

TEST(Code128, switches_between_its_sets) {
    constexpr int start_b = 104, start_c = 105, to_a = 101, to_b = 100, to_c = 99;
    const std::tuple<TextView, std::vector<std::uint8_t>> cases[] = {
        {u"(12)5901212125", {start_b, 8, 17, 18, 9, to_c, 59, 1, 21, 21, 25}},
        {u"1234", {start_c, 12, 34}},
        {u"12345", {start_c, 12, 34, to_b, 21}},
        {u"x1234y", {start_b, 88, to_c, 12, 34, to_b, 89}},
        // Two digits in set B are no reason to switch, four are.
        {u"x12y", {start_b, 88, 17, 18, 89}},
        // A control character is in set A only, and set A is kept for what it has too.
        {u"a\tB", {start_b, 65, to_a, 73, 34}},
        {u"\tb", {start_b, to_a, 73, to_b, 66}},
        {u"12\n34", {start_c, 12, to_a, 74, 19, 20}},
        {u"", {start_b}},
        // What no set has is left out; in set C the character behind goes too.
        {u"aąb", {start_b, 65, 66}},
        {u"12ąbc", {start_c, 12, to_b, 67}}};
    for (auto [text, symbol] : cases) {
        // The check character, computed the way the standard words it.
        std::size_t sum = symbol[0];
        for (std::size_t i = 1; i < symbol.size(); ++i) sum += i * symbol[i];
        symbol.push_back(static_cast<std::uint8_t>(sum % 103));
        symbol.push_back(106);
        EXPECT_EQ(encode_code128(text), symbol) << base::to_utf8(text);
    }
}

TEST(Code128, trimmed_text_loses_value_zero_where_something_follows) {
    const auto characters = code128_font_characters(base::windows_1250);
    // The space is value 0, whose font character is a space.
    const auto values = encode_code128(u"a b");
    EXPECT_EQ(code128_text(values, characters).size(), 6u);
    EXPECT_EQ(code128_trimmed_text(values, characters).size(), 5u);
}

}  // namespace
}  // namespace tavrix::barcode
