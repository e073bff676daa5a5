#include <gtest/gtest.h>

#include "barcode/code128.h"
#include "barcode/ean.h"
#include "base/windows_1250.h"

namespace tavrix::barcode {
namespace {

using base::Text;
using base::TextView;

TEST(Ean, symbols_of_published_numbers) {
    EXPECT_EQ(encode_ean13(u"590123412345"), u"5JKLCDO*bcdefh+");
    EXPECT_EQ(encode_ean8(u"1234567"), u":BCDE*fgha+");
    EXPECT_EQ(encode_add_on(u"12"), u"[B\\C");
    // The worked example of the GS1 General Specifications, 5.2.2.2: 86104 has the check value 3.
    EXPECT_EQ(encode_add_on(u"86104"), u"[S\\G\\B\\A\\O");
}

TEST(Ean, check_digit_of_zero_and_of_published_numbers) {
    for (const TextView number : {u"4006381333931", u"9780201379624", u"96385074", u"5901234123457",
                                  u"00000000", u"10000007"}) {
        EXPECT_EQ(gs1_check_digit(number.substr(0, number.size() - 1)), number.back())
            << base::to_utf8(number);
    }
}

// Each leading digit has a parity row of its own; a swapped one would be read as another digit.
TEST(Ean, every_leading_digit_has_its_parities) {
    const char* const rows[] = {"AAAAAA", "AABABB", "AABBAB", "AABBBA", "ABAABB",
                                "ABBAAB", "ABBBAA", "ABABAB", "ABABBA", "ABBABA"};
    for (char16_t leading = u'0'; leading <= u'9'; ++leading) {
        const Text symbol = encode_ean13(Text(1, leading) + u"00000000000");
        std::string parities;
        for (const char16_t each : symbol.substr(1, 6)) parities += each == u'A' ? 'A' : 'B';
        EXPECT_EQ(parities, rows[leading - u'0']);
    }
}

TEST(Ean, add_ons_of_two_digits_and_bytes) {
    EXPECT_EQ(binary_byte(5), u"00000101");
    EXPECT_EQ(binary_byte(255), u"11111111");
    EXPECT_EQ(encode_add_on(u"00"), u"[A\\A");
    EXPECT_EQ(encode_add_on(u"01"), u"[A\\L");
    EXPECT_EQ(encode_add_on(u"02"), u"[K\\C");
    EXPECT_EQ(encode_add_on(u"03"), u"[K\\N");
}

TEST(Ean, refuses_what_is_not_its_digits) {
    for (const TextView text : {u"", u"123456", u"12345678", u"123456a", u"1234567890123",
                                u"59012341234x", u"12345６7", u"590123412 45"}) {
        EXPECT_EQ(encode_ean8(text), u"") << base::to_utf8(text);
        EXPECT_EQ(encode_ean13(text), u"") << base::to_utf8(text);
    }
    for (const TextView text : {u"", u"1", u"123", u"1234", u"123456", u"1a", u"1234x"}) {
        EXPECT_EQ(encode_add_on(text), u"") << base::to_utf8(text);
    }
}

using Values = std::vector<std::uint8_t>;

// Writes the check character too, computed the way the standard words it.
Values symbol(std::initializer_list<int> start_and_data) {
    Values values;
    int sum = 0;
    int weight = 0;
    for (const int value : start_and_data) {
        sum += value * (weight == 0 ? 1 : weight);
        ++weight;
        values.push_back(static_cast<std::uint8_t>(value));
    }
    values.push_back(static_cast<std::uint8_t>(sum % 103));
    values.push_back(106);
    return values;
}

TEST(Code128, switches_between_its_sets) {
    constexpr int start_b = 104, start_c = 105, to_a = 101, to_b = 100, to_c = 99;
    EXPECT_EQ(encode_code128(u"(12)5901212125"),
              symbol({start_b, 8, 17, 18, 9, to_c, 59, 1, 21, 21, 25}));
    EXPECT_EQ(encode_code128(u"AB"), symbol({start_b, 33, 34}));
    EXPECT_EQ(encode_code128(u"1234"), symbol({start_c, 12, 34}));
    EXPECT_EQ(encode_code128(u"12345"), symbol({start_c, 12, 34, to_b, 21}));
    EXPECT_EQ(encode_code128(u"x1234y"), symbol({start_b, 88, to_c, 12, 34, to_b, 89}));
    // Two digits in set B are no reason to switch, four are.
    EXPECT_EQ(encode_code128(u"x12y"), symbol({start_b, 88, 17, 18, 89}));
    // A control character is in set A only, and set A is kept for what it has too.
    EXPECT_EQ(encode_code128(u"a\tB"), symbol({start_b, 65, to_a, 73, 34}));
    EXPECT_EQ(encode_code128(u"\tb"), symbol({start_b, to_a, 73, to_b, 66}));
    EXPECT_EQ(encode_code128(u"12\n34"), symbol({start_c, 12, to_a, 74, 19, 20}));
    EXPECT_EQ(encode_code128(u""), symbol({start_b}));
}

TEST(Code128, leaves_out_what_no_set_has) {
    constexpr int start_b = 104, start_c = 105, to_b = 100;
    EXPECT_EQ(encode_code128(u"aąb"), symbol({start_b, 65, 66}));
    // In set C the character behind goes too.
    EXPECT_EQ(encode_code128(u"12ąbc"), symbol({start_c, 12, to_b, 67}));
    EXPECT_EQ(encode_code128(u"12ą"), symbol({start_c, 12}));
}

TEST(Code128, trimmed_text_loses_value_zero_where_something_follows) {
    const auto characters = code128_font_characters(base::windows_1250);
    // "a b": the space is value 0, whose font character is a space.
    const Values values = encode_code128(u"a b");
    EXPECT_EQ(code128_text(values, characters).size(), 6u);
    EXPECT_EQ(code128_trimmed_text(values, characters).size(), 5u);
}

}  // namespace
}  // namespace tavrix::barcode
