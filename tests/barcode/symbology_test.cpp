#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "barcode/symbology.h"

namespace tavrix::barcode {
namespace {

using base::TextView;

TEST(Symbologies, refuse_what_would_not_scan_as_typed) {
    const std::tuple<TextView, TextView, bool> cases[] = {
        {u"EAN13", u"5901234123457", true},
        {u"EAN13", u"5901234123450", false},
        {u"EAN13", u"590123412345+12", true},
        {u"EAN13", u"590123412345+123", false},
        {u"EAN8", u"12345670", true},
        {u"EAN8", u"123456700", false},
        {u"EAN128", u"zażółć", false},
        {u"EAN128", u"", false},
        {u"EAN39", u"abc", false},
        {u"EAN39", u"A*B", false},
        {u"EAN39EX", u"abc", true},
        {u"EAN39EX", u"a*b", false},
    };
    for (const auto& [kind, text, is_accepted] : cases) {
        const Encoded encoded = find_symbology(kind)->encode(text);
        EXPECT_EQ(encoded.refusal.empty(), is_accepted) << base::to_utf8(text);
        EXPECT_EQ(encoded.symbol.empty(), !is_accepted) << base::to_utf8(text);
    }
    EXPECT_EQ(find_symbology(u"ean13"), nullptr);
}

std::string code(TextView text) {
    return "`" + base::to_utf8(text) + "`";
}

// The page's table is for people, the one in the program for everything else.
TEST(Symbologies, stand_on_the_page_as_in_the_table) {
    std::ifstream file(TAVRIX_BARCODES_PAGE);
    const std::string page{std::istreambuf_iterator<char>(file), {}};
    for (const Symbology& row : symbologies()) {
        const std::string font = row.font == nullptr
                                     ? std::string("none")
                                     : base::to_utf8(row.font->family) + ", " +
                                           code(base::Text(row.font->file) + u".ttf");
        const std::string caption =
            row.needs_caption() ? "Arial CE " + std::to_string(row.caption_points) : "in the font";
        const std::string line = "| " + code(row.name) + " | " + base::to_utf8(row.title) + " | " +
                                 font + " | " + std::to_string(row.smallest_points) + " | " +
                                 caption + " | " + code(row.method) + " |\n";
        EXPECT_NE(page.find(line), std::string::npos) << line;
    }
}

}  // namespace
}  // namespace tavrix::barcode
