#include <gtest/gtest.h>

#include "barcode/qr_generator.h"
#include "base/error.h"

namespace tavrix::barcode {
namespace {

using base::Text;

// As the drawing front sets it: level medium, all versions, the smallest module that tells places.
drk_wyd_QRGen front_settings(std::int32_t low_version = 1, std::int32_t high_version = 40) {
    drk_wyd_QRGen generator;
    generator.set_xEcl(1);
    generator.set_xModuleSize(1);
    generator.set_xBoostEcl(true);
    generator.set_xMinVersion(low_version);
    generator.set_xMaxVersion(high_version);
    return generator;
}

// ISO/IEC 18004: 2015, table 7: version 40, level medium, byte mode.
constexpr std::size_t capacity_40_m = 2331;

TEST(Qr, the_largest_text_and_one_byte_more) {
    const drk_wyd_QRGen generator = front_settings();
    EXPECT_TRUE(generator.QRCodegenBarcode(Text(capacity_40_m, u'a')));
    EXPECT_FALSE(generator.QRCodegenBarcode(Text(capacity_40_m + 1, u'a')));
    // Polish letters take two bytes.
    EXPECT_TRUE(generator.QRCodegenBarcode(Text(capacity_40_m / 2, u'ł') + u"a"));
    EXPECT_FALSE(generator.QRCodegenBarcode(Text(capacity_40_m / 2 + 1, u'ł')));
    EXPECT_FALSE(generator.QRCodegenBarcode(u""));
    // Version 5 holds 84 bytes.
    EXPECT_TRUE(front_settings(5, 5).QRCodegenBarcode(Text(84, u'a')));
    EXPECT_FALSE(front_settings(5, 5).QRCodegenBarcode(Text(85, u'a')));
}

TEST(Qr, refuses_versions_and_levels_outside_the_range) {
    for (const auto& [low, high] : {std::pair{0, 40}, {1, 41}, {7, 6}}) {
        EXPECT_FALSE(front_settings(low, high).QRCodegenBarcode(u"a"));
    }
    drk_wyd_QRGen other = front_settings();
    other.set_xEcl(4);
    EXPECT_FALSE(other.QRCodegenBarcode(u"a"));
}

TEST(Qr, picture_has_a_quiet_zone_and_a_row_for_each_row_of_modules) {
    drk_wyd_QRGen generator = front_settings();
    generator.set_xModuleSize(120);
    const auto drawing = generator.QRCodegenBarcode(u"Tavrix");
    constexpr std::int32_t modules = 21 + 8;
    ASSERT_TRUE(drawing);
    EXPECT_EQ(drawing->width_twips(), modules * 120);
    EXPECT_EQ(drawing->height_twips(), modules * 120);
    EXPECT_EQ(drawing->rows().size(), 21u);
    for (const drawing::PointTwips point : drawing->points()) {
        EXPECT_GE(std::min(point.x_twips, point.y_twips), 4 * 120);
        EXPECT_LE(std::max(point.x_twips, point.y_twips), (modules - 4) * 120);
    }
    generator.set_xModuleSize(2'000'000'000);
    EXPECT_THROW(generator.QRCodegenBarcode(u"Tavrix"), base::AutomationError);
}

TEST(Qr, colours) {
    const std::pair<const char16_t*, drawing::Colour> cases[] = {
        {u"Red", 0x0000FF},    {u"BLUE", 0xFF0000},    {u"cYaN", 0xFFFF00}, {u"green", 0x00FF00},
        {u"yellow", 0x00FFFF}, {u"magenta", 0xFF00FF}, {u"black", 0},       {u"czarny", 0}};
    for (const auto& [name, value] : cases) EXPECT_EQ(qr_colour(name), value);
}

}  // namespace
}  // namespace tavrix::barcode
