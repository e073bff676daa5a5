// Symbols as pixels, measured against the standards: every bar, space, quiet zone and guard; and
// the same measurements on symbols that were broken on purpose.

#include <gtest/gtest.h>

#include <cmath>

#include "barcode/qr_generator.h"
#include "barcode/symbol_drawing.h"
#include "barcode/symbology.h"
#include "base/windows_1250.h"
#include "drawing/coverage.h"
#include "fonts/barcode_fonts.h"
#include "tests/barcode/measure.h"

namespace tavrix::barcode {
namespace {

using base::Text;
using base::TextView;
using namespace test;

constexpr std::int32_t module_twips = 15;

drawing::Coverage pixels(const drawing::Drawing& drawing, std::int32_t module_px) {
    return drawing::rasterise(drawing, static_cast<double>(module_px) / module_twips);
}

drawing::Drawing drawing_of(TextView kind, TextView symbol_text) {
    return draw_symbol(*find_symbology(kind), symbol_text, module_twips, 0);
}

drawing::Drawing symbol_of(TextView kind, TextView text) {
    return drawing_of(kind, find_symbology(kind)->encode(text).symbol);
}

ScanLine scan(const drawing::Drawing& drawing, std::int32_t module_px = 2) {
    const drawing::Coverage picture = pixels(drawing, module_px);
    return measure(picture, picture.height_px / 3, module_px);
}

/// The drawing with each polygon changed.
template <typename Change>
drawing::Drawing changed(const drawing::Drawing& drawing, Change&& change) {
    drawing::Drawing result(drawing.width_twips(), drawing.height_twips(), drawing.colour());
    std::size_t number = 0;
    std::vector<drawing::PointTwips> points;
    drawing.for_each_polygon([&](std::span<const drawing::PointTwips> polygon) {
        points.assign(polygon.begin(), polygon.end());
        change(number++, points);
        result.add(points);
    });
    return result;
}

TEST(Pixels, linear_symbols_at_203_300_and_600_dots_per_inch) {
    for (const std::int32_t dpi : {203, 300, 600}) {
        const auto module_px = static_cast<std::int32_t>(std::lround(module_twips * dpi / 1440.0));
        EXPECT_EQ(read_ean(scan(symbol_of(u"EAN13", u"590123412345"), module_px)), "5901234123457");
        EXPECT_EQ(read_ean(scan(symbol_of(u"EAN8", u"1234567"), module_px)), "12345670");
        EXPECT_EQ(read_code128(scan(symbol_of(u"EAN128", u"(12)5901212125"), module_px)),
                  "(12)5901212125");
        EXPECT_EQ(read_code39(scan(symbol_of(u"EAN39", u"ABC-123 $/+%."), module_px)),
                  "ABC-123 $/+%.");
        EXPECT_EQ(read_code39(scan(symbol_of(u"EAN39EX", u"aB$"), module_px)), "+AB/D");
    }
}

TEST(Pixels, every_leading_digit_and_every_character) {
    for (char16_t leading = u'0'; leading <= u'9'; ++leading) {
        const Text digits = Text(1, leading) + u"12345678907";
        const std::string read = read_ean(scan(symbol_of(u"EAN13", digits)));
        EXPECT_EQ(read.substr(0, 12), base::to_utf8(digits));
    }
    Text ascii;
    for (char16_t each = 32; each < 127; ++each) ascii += each;
    EXPECT_EQ(read_code128(scan(symbol_of(u"EAN128", ascii))), base::to_utf8(ascii));
    const TextView code39 = u"0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ-. $/+%";
    EXPECT_EQ(read_code39(scan(symbol_of(u"EAN39", code39))), base::to_utf8(code39));
}

TEST(Pixels, guards_are_five_modules_longer_and_digits_stand_below) {
    constexpr std::int32_t module_px = 4;
    const drawing::Coverage picture = pixels(symbol_of(u"EAN13", u"590123412345"), module_px);
    const auto height_modules = [&](std::int32_t module) {
        return bar_height_px(picture, module * module_px + module_px / 2) / module_px;
    };
    // Start guard, centre guard and end guard, behind a quiet zone of 11 modules.
    for (const std::int32_t guard : {11, 13, 11 + 46, 11 + 48, 11 + 92, 11 + 94}) {
        EXPECT_EQ(height_modules(guard), 60) << guard;
    }
    EXPECT_EQ(height_modules(11 + 3 + 3), 55);  // first bar of a 9 in set A, 0001011
    // Below the bars there is ink in every digit's cell and one digit in the quiet zone.
    const auto has_ink = [&](std::int32_t from_module, std::int32_t to_module) {
        for (std::int32_t y = 58 * module_px; y < 65 * module_px; ++y) {
            for (std::int32_t x = from_module * module_px; x < to_module * module_px; ++x) {
                if (picture.at(x, y) == 255) return true;
            }
        }
        return false;
    };
    EXPECT_TRUE(has_ink(1, 8));
    EXPECT_FALSE(has_ink(8, 11));
    for (std::int32_t digit = 0; digit < 12; ++digit) {
        const std::int32_t left = 14 + 7 * digit + (digit < 6 ? 0 : 5);
        EXPECT_TRUE(has_ink(left, left + 7)) << digit;
    }
}

TEST(Pixels, add_on_stands_nine_modules_off_with_its_digits_above) {
    constexpr std::int32_t module_px = 2;
    const drawing::Coverage picture = pixels(symbol_of(u"EAN13", u"590123412345+12"), module_px);
    const std::int32_t add_on_left = (113 + 2) * module_px;
    drawing::Coverage add_on{picture.width_px - add_on_left, 1, {}};
    for (std::int32_t x = add_on_left; x < picture.width_px; ++x) {
        add_on.dark.push_back(picture.at(x, 40 * module_px));
    }
    // 1011, then 1 and 2 in set A, 0011001 and 0010011, with 01 between them.
    add_on.dark.insert(add_on.dark.begin(), 2, 0);
    add_on.width_px += 2;
    const ScanLine line = measure(add_on, 0, module_px);
    EXPECT_EQ(line.runs, "1122221112122");
    EXPECT_EQ(line.right_quiet_modules, 5);
    // Above the bars there is ink, below them none.
    std::int32_t above = 0;
    std::int32_t below = 0;
    for (std::int32_t x = add_on_left; x < picture.width_px; ++x) {
        for (std::int32_t y = 0; y < 10 * module_px; ++y) above += picture.at(x, y) != 0;
        for (std::int32_t y = 62 * module_px; y < picture.height_px; ++y) {
            below += picture.at(x, y) != 0;
        }
    }
    EXPECT_GT(above, 20);
    EXPECT_EQ(below, 0);
}

TEST(Pixels, a_swapped_parity_row_is_found) {
    // The leading digit 5 over the parities of 4.
    const Text of_5 = find_symbology(u"EAN13")->encode(u"590123412345").symbol;
    Text symbol = find_symbology(u"EAN13")->encode(u"490123412345").symbol;
    symbol.replace(symbol.size() - 2, 1, of_5, of_5.size() - 2, 1);  // with the check digit of 5
    symbol[0] = u'5';
    EXPECT_EQ(read_ean(scan(drawing_of(u"EAN13", symbol))), "(check digit)");
    // A row that no digit has.
    symbol = u"5KKLMNO*bcdefh+";
    EXPECT_EQ(read_ean(scan(drawing_of(u"EAN13", symbol))), "(parity)");
}

TEST(Pixels, a_thin_bar_is_found) {
    for (const TextView kind : {u"EAN13", u"EAN128", u"EAN39"}) {
        const drawing::Drawing thin =
            changed(symbol_of(kind, u"590123412345"), [](std::size_t number, auto& points) {
                if (number == 0) points[2].x_twips = points[3].x_twips -= 4;
            });
        EXPECT_EQ(scan(thin).runs, "") << base::to_utf8(kind);
    }
}

TEST(Pixels, a_missing_quiet_zone_is_found) {
    const auto moved = [](TextView kind, std::int32_t by_modules) {
        return changed(symbol_of(kind, u"590123412345"), [=](std::size_t, auto& points) {
            for (auto& point : points) point.x_twips += by_modules * module_twips;
        });
    };
    EXPECT_EQ(read_ean(scan(moved(u"EAN13", -1))), "(quiet zone)");
    EXPECT_EQ(read_ean(scan(moved(u"EAN13", 1))), "(quiet zone)");
    EXPECT_EQ(read_code128(scan(moved(u"EAN128", -1))), "(quiet zone)");
    EXPECT_EQ(read_code39(scan(moved(u"EAN39", 2))), "(quiet zone)");
}

TEST(Pixels, a_short_guard_is_found) {
    constexpr std::int32_t module_px = 2;
    const drawing::Drawing cut =
        changed(symbol_of(u"EAN13", u"590123412345"), [](std::size_t number, auto& points) {
            if (number > 0) return;
            for (auto& point : points) point.y_twips = std::min(point.y_twips, 50 * module_twips);
        });
    EXPECT_LT(bar_height_px(pixels(cut, module_px), 11 * module_px), 60 * module_px);
}

TEST(Pixels, qr_modules_are_whole_and_four_are_white_around) {
    drk_wyd_QRGen generator;
    generator.set_xEcl(1);
    generator.set_xSquare(true);
    generator.set_xModuleSize(module_twips);
    constexpr std::int32_t module_px = 3;
    const drawing::Coverage picture =
        pixels(*generator.QRCodegenBarcode(u"https://example.pl/ąę"), module_px);
    EXPECT_EQ(picture.width_px % module_px, 0);
    const std::int32_t modules = picture.width_px / module_px;
    for (std::int32_t y = 0; y < picture.height_px; ++y) {
        for (std::int32_t x = 0; x < picture.width_px; ++x) {
            const std::int32_t column = x / module_px;
            const std::int32_t row = y / module_px;
            const std::uint8_t pixel = picture.at(x, y);
            ASSERT_EQ(pixel, picture.at(column * module_px, row * module_px));
            ASSERT_TRUE(pixel == 0 || pixel == 255);
            if (std::min(column, row) < 4 || std::max(column, row) >= modules - 4) {
                ASSERT_EQ(pixel, 0);
            }
        }
    }
    // The finder pattern's rows 1:1:3:1:1.
    EXPECT_EQ(measure(picture, 7 * module_px, module_px).runs.substr(0, 5), "11311");
}

TEST(Pixels, turning_keeps_every_bar) {
    const drawing::Drawing drawing = symbol_of(u"EAN13", u"590123412345");
    EXPECT_EQ(read_ean(scan(drawing::turned(drawing::turned(drawing, 1), 3))), "5901234123457");
    const drawing::Drawing quarter = drawing::turned(drawing, 1);
    EXPECT_EQ(quarter.width_twips(), drawing.height_twips());
    // Upside down a symbol reads the same backwards.
    const ScanLine line = scan(drawing::turned(drawing, 2));
    const std::string forwards = scan(drawing).runs;
    EXPECT_EQ(line.runs, std::string(forwards.rbegin(), forwards.rend()));
    EXPECT_EQ(line.right_quiet_modules, 11);
}

}  // namespace
}  // namespace tavrix::barcode
