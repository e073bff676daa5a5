#include <gtest/gtest.h>

#include <qrcodegen/qrcodegen.hpp>
#include <random>

#include "barcode/qr_generator.h"
#include "barcode/qr_mask.h"
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

// Flat bytes leave long runs and large patterns, letters are what hosts send, the rest is noise.
base::Bytes random_bytes(std::mt19937& random, std::size_t length) {
    const auto kind = random() % 3;
    base::Bytes bytes(length);
    for (std::uint8_t& byte : bytes) {
        const auto value = random();
        byte = static_cast<std::uint8_t>(
            kind == 0 ? value : (kind == 1 ? 'a' + value % 26 : value % 8 / 7));
    }
    return bytes;
}

TEST(Qr, chosen_mask_is_the_librarys_own_choice) {
    using qrcodegen::QrCode;
    // Small symbols are seldom balanced; version 32 has the irregular alignment patterns.
    const auto symbols_of = [](int version) {
        return version <= 2 ? 100 : (version <= 11 ? 16 : (version == 32 ? 12 : 2));
    };
    std::mt19937 random(1);
    for (int version = 1; version <= 40; ++version) {
        for (int number = 0; number < symbols_of(version); ++number) {
            const auto level = static_cast<QrCode::Ecc>(number % 4);
            // Version 1 holds 7 bytes at the highest level.
            const auto longest = static_cast<std::size_t>(version * version / 2 + 6);
            const std::vector segments = {
                qrcodegen::QrSegment::makeBytes(random_bytes(random, 1 + random() % longest))};
            const auto symbol = [&](int mask) {
                return QrCode::encodeSegments(segments, level, version, version, mask, false);
            };
            const int any_mask = static_cast<int>(random() % 8);
            EXPECT_EQ(choose_qr_mask(symbol(any_mask)), symbol(-1).getMask())
                << "version " << version << ", level " << number % 4 << ", number " << number;
        }
    }
}

TEST(Qr, colours) {
    const std::pair<const char16_t*, drawing::Colour> cases[] = {
        {u"Red", 0x0000FF},    {u"BLUE", 0xFF0000},    {u"cYaN", 0xFFFF00}, {u"green", 0x00FF00},
        {u"yellow", 0x00FFFF}, {u"magenta", 0xFF00FF}, {u"black", 0},       {u"czarny", 0}};
    for (const auto& [name, value] : cases) EXPECT_EQ(qr_colour(name), value);
}

}  // namespace
}  // namespace tavrix::barcode
