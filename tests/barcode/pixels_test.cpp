// What decoders forgive: modules of whole pixels, quiet zones, guards, where digits stand. And what
// a drawing becomes.

#include <gtest/gtest.h>

#include "barcode/symbol_drawing.h"
#include "drawing/coverage.h"
#include "drawing/png.h"
#include "drawing/svg.h"
#include "drawing/text.h"

namespace tavrix::barcode {
namespace {

using base::TextView;
using drawing::Coverage;
using drawing::Drawing;

constexpr std::int32_t module_twips = 15;

Drawing symbol_of(TextView kind, TextView text) {
    const Symbology& row = *find_symbology(kind);
    return draw_symbol(row, row.encode(text).symbol, module_twips, 0);
}

Coverage pixels(const Drawing& drawing, std::int32_t module_px) {
    return drawing::rasterise(drawing, static_cast<double>(module_px) / module_twips);
}

/// A row of pixels as its modules, 1 for dark; "?" where a module is not of one colour.
std::string modules_of(const Coverage& picture, std::int32_t y_px, std::int32_t module_px) {
    std::string modules;
    for (std::int32_t x = 0; x < picture.width_px; x += module_px) {
        const std::uint8_t first = picture.at(x, y_px);
        bool is_whole = first == 0 || first == 255;
        for (std::int32_t i = 1; i < module_px; ++i) is_whole &= picture.at(x + i, y_px) == first;
        modules += !is_whole ? '?' : first == 255 ? '1' : '0';
    }
    return modules;
}

bool has_ink(const Coverage& picture, std::int32_t left, std::int32_t top, std::int32_t right,
             std::int32_t bottom) {
    for (std::int32_t y = top; y < bottom; ++y) {
        for (std::int32_t x = left; x < right; ++x) {
            if (picture.at(x, y) == 255) return true;
        }
    }
    return false;
}

TEST(Pixels, modules_are_whole_and_quiet_zones_as_wide_as_the_standards_say) {
    const std::tuple<TextView, TextView, std::size_t, std::size_t> cases[] = {
        {u"EAN13", u"590123412345", 11, 7}, {u"EAN8", u"1234567", 7, 7},
        {u"EAN128", u"(12)590121", 10, 10}, {u"EAN39", u"ABC-12$", 10, 11},
        {u"EAN39EX", u"aB$", 10, 11},       {u"EAN13", u"590123412345+12", 11, 5}};
    for (const auto& [kind, text, left_modules, right_modules] : cases) {
        const Drawing drawing = symbol_of(kind, text);
        for (const std::int32_t module_px : {2, 3, 6}) {
            const Coverage picture = pixels(drawing, module_px);
            const std::string modules = modules_of(picture, picture.height_px / 3, module_px);
            EXPECT_EQ(modules.find('?'), std::string::npos);
            EXPECT_EQ(modules.find('1'), left_modules) << base::to_utf8(text);
            EXPECT_EQ(modules.size() - 1 - modules.rfind('1'), right_modules)
                << base::to_utf8(text);
        }
    }
}

TEST(Pixels, guards_are_five_modules_longer_and_digits_stand_below) {
    const Coverage picture = pixels(symbol_of(u"EAN13", u"590123412345"), 4);
    const auto row = [&](std::int32_t module) { return modules_of(picture, module * 4 + 2, 4); };
    // Start guard, centre guard and end guard, behind a quiet zone of 11 modules.
    for (const std::size_t guard : {11u, 13u, 11u + 46, 11u + 48, 11u + 92, 11u + 94}) {
        EXPECT_EQ(row(0)[guard], '0');
        EXPECT_EQ(row(60)[guard], '1');
        EXPECT_EQ(row(61)[guard], '0');
    }
    EXPECT_EQ(row(55)[11 + 3 + 3], '1');  // first bar of a 9 in set A, 0001011
    EXPECT_NE(row(56)[11 + 3 + 3], '1');
    const auto has_digit = [&](std::int32_t left, std::int32_t right) {
        return has_ink(picture, left * 4, 58 * 4, right * 4, 65 * 4);
    };
    EXPECT_TRUE(has_digit(1, 8));  // the leading one, in the quiet zone
    EXPECT_FALSE(has_digit(8, 11));
    for (std::int32_t digit = 0; digit < 12; ++digit) {
        const std::int32_t left = 14 + 7 * digit + (digit < 6 ? 0 : 5);
        EXPECT_TRUE(has_digit(left, left + 7)) << digit;
    }
}

TEST(Pixels, add_on_stands_nine_modules_off_with_its_digits_above) {
    const Coverage picture = pixels(symbol_of(u"EAN13", u"590123412345+12"), 2);
    EXPECT_EQ(modules_of(picture, 40 * 2, 2).substr(11 + 92, 13), "1010000000001");
    const std::int32_t left = (113 + 2) * 2;
    EXPECT_TRUE(has_ink(picture, left, 0, picture.width_px, 10 * 2));
    EXPECT_FALSE(has_ink(picture, left, 62 * 2, picture.width_px, picture.height_px));
}

TEST(Drawings, turn_by_quarters) {
    Drawing drawing(100, 30);
    drawing.add({{10, 0}, {20, 5}, {10, 5}});
    const Drawing quarter = drawing::turned(drawing, 1);
    EXPECT_EQ(quarter.width_twips(), 30);
    EXPECT_EQ(quarter.height_twips(), 100);
    EXPECT_EQ(quarter.points(), (std::vector<drawing::PointTwips>{{30, 10}, {25, 20}, {25, 10}}));
    EXPECT_EQ(drawing::turned(quarter, 3).points(), drawing.points());
    EXPECT_EQ(drawing::turned(drawing, -2).points().front(), (drawing::PointTwips{90, 30}));
}

TEST(Drawings, become_svg) {
    Drawing drawing(110, 25, 0x0000FF);
    drawing.add_rectangle(10, 0, 20, 5);
    drawing.add({{0, 10}, {0, 4}, {7, 4}, {7, 10}});
    drawing.add({{50, 0}, {60, 20}, {40, 20}});
    EXPECT_EQ(drawing::to_svg(drawing),
              "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"5.50pt\" height=\"1.25pt\" "
              "viewBox=\"0 0 110 25\"><path fill=\"#fff\" d=\"M0 0H110V25H0z\"/>"
              "<path shape-rendering=\"crispEdges\" fill=\"#ff0000\" d=\"M0 0"
              "m10 0h10v5h-10zm-10 10v-6h7v6zm50 -10l10 20 -20 0z\"/></svg>\n");
}

TEST(Drawings, lines_by_the_thousand_are_the_same_svg) {
    // An em of 20 units and glyphs of 10: a bar in one, nothing in the other.
    fonts::Font font;
    font.units_per_em = 20;
    font.ascent = 20;
    font.add({10, {}}, u" ");
    font.add({10, {{{2, 0}, {2, 20}, {4, 20}, {4, 0}}}}, u"|");
    const drawing::TextSvg writer(font, 40, 0);
    const std::string svg = writer.write(u"| |", {80, 50, 6, 5});
    EXPECT_TRUE(
        svg.ends_with(" d=\"M6 5m4 40v-40h4v40zm16 -40m20 0m4 40v-40h4v40zm16 -40\"/></svg>\n"))
        << svg;
}

TEST(Drawings, png_keeps_its_physical_size) {
    const base::Bytes file = drawing::to_png({2, 1, {255, 0}}, 0x0000FF, 300);
    const std::string bytes(file.begin(), file.end());
    // 300 dots per inch are 11811 per metre, 0x2E23; unit 1 is the metre.
    EXPECT_NE(bytes.find(std::string("pHYs\0\0\x2E\x23\0\0\x2E\x23\1", 13)), std::string::npos);
}

}  // namespace
}  // namespace tavrix::barcode
