#include <gtest/gtest.h>

#include "barcode/surface/rotation.h"
#include "base/error.h"
#include "tests/support/recording_surface.h"

namespace tavrix::barcode {
namespace {

using base::Text;
using test::RecordingSurface;

constexpr std::int32_t white = 0xFFFFFF;

// The same in all three bytes, so that it survives in bitmaps of any depth.
std::int32_t colour_at(std::int32_t x, std::int32_t y) {
    return (16 * x + y) * 0x010101;
}

void fill(ports::Surface& surface, std::int32_t width_px, std::int32_t height_px) {
    for (std::int32_t y = 0; y < height_px; ++y) {
        for (std::int32_t x = 0; x < width_px; ++x) surface.set_pixel(x, y, colour_at(x, y));
    }
}

/// Has a row and a column of pixels more than its size says, as a box has its border.
struct BorderedBox : ports::Canvas {
    BorderedBox() : Canvas(5 * 15, 4 * 15) { fill(*this, 5, 4); }
    double width() override { return 4 * 15; }
    double height() override { return 3 * 15; }
};

TEST(Rotation, quarter_turn_counts_both_ends_of_the_size) {
    BorderedBox source;
    ports::Canvas destination(10 * 15, 10 * 15);
    copy_quarter_turn(source, destination, 2, 1);
    // (x, y) comes to (2 + 3 - y, 1 + x) for x up to 4 and y up to 3.
    for (std::int32_t y = 0; y <= 3; ++y) {
        for (std::int32_t x = 0; x <= 4; ++x) {
            EXPECT_EQ(destination.pixel(2 + 3 - y, 1 + x), colour_at(x, y)) << x << ' ' << y;
        }
    }
    // What lies beyond the source is not written.
    ports::Canvas exact(4 * 15, 3 * 15);
    ports::Canvas untouched(10 * 15, 10 * 15);
    fill(exact, 4, 3);
    copy_quarter_turn(exact, untouched, 2, 1);
    EXPECT_EQ(untouched.pixel(2, 1), white);
    EXPECT_EQ(untouched.pixel(5, 5), white);
}

TEST(Rotation, bitmaps_of_every_depth_turn_by_quarters_only) {
    for (const std::int32_t depth : {8, 15, 16, 24, 32}) {
        RecordingSurface source(4 * 15, 3 * 15);
        fill(source, 4, 3);
        source.set_depth(depth);
        const std::int32_t pixel_bytes = depth == 8 ? 1 : depth <= 16 ? 2 : depth == 24 ? 3 : 4;
        const auto expect_turned = [&](std::int16_t angle, std::int32_t width_px, auto&& place) {
            RecordingSurface destination(8 * 15, 8 * 15);
            if (angle == 180) destination.set_width(4 * 15), destination.set_height(3 * 15);
            destination.set_depth(depth);
            turn_bitmap(source, destination, angle);
            EXPECT_EQ(destination.width(), width_px * 15);
            EXPECT_TRUE(destination.log().ends_with(u"Refresh; Picture; "));
            ASSERT_TRUE(destination.written);
            for (std::int32_t y = 0; y < 3; ++y) {
                for (std::int32_t x = 0; x < 4; ++x) {
                    const auto [to_x, to_y] = place(x, y);
                    const std::int32_t byte = (to_y * width_px + to_x) * pixel_bytes;
                    for (std::int32_t i = 0; i < std::min(pixel_bytes, 3); ++i) {
                        EXPECT_EQ(destination.written->bits.at(static_cast<std::size_t>(byte + i)),
                                  16 * x + y)
                            << depth << ' ' << angle;
                    }
                }
            }
        };
        expect_turned(90, 3, [](auto x, auto y) { return std::pair(2 - y, x); });
        expect_turned(180, 4, [](auto x, auto y) { return std::pair(3 - x, 2 - y); });
        expect_turned(270, 3, [](auto x, auto y) { return std::pair(y, 3 - x); });
        RecordingSurface none(8 * 15, 8 * 15);
        turn_bitmap(source, none, 45);
        EXPECT_EQ(none.log(), u"");
    }
}

TEST(Rotation, refuses_other_depths_and_palettes) {
    const struct {
        std::int32_t depth;
        std::uint32_t number;
        const char16_t* source;
        const char16_t* description;
    } cases[] = {
        {4, 0x800403E9, u"DDBHelper.GetBitmapPixels", u"Invalid number of bits per pixel: 4"},
        // The destination's, when it is another one.
        {16, 0x800403E9, u"DDBHelper.GetBitmapPixels", u"Invalid number of bits per pixel: 32"},
        {8, 0x800403EA, u"DDBHelper.MatchColorPalette", u"Error matching bitmap palette"}};
    for (const auto& each : cases) {
        RecordingSurface source(60, 45), destination(60, 45);
        source.set_depth(each.depth);
        source.lack(u"Palette");
        try {
            turn_bitmap(source, destination, 90);
            ADD_FAILURE() << "nothing was thrown";
        } catch (const base::AutomationError& error) {
            EXPECT_EQ(static_cast<std::uint32_t>(error.number()), each.number);
            EXPECT_EQ(error.source(), each.source);
            EXPECT_EQ(error.description(), each.description);
        }
    }
}

TEST(Rotation, turned_text_gives_a_host_scale_back) {
    RecordingSurface surface(6000, 4000);
    surface.set_scale_left(-10);
    surface.set_scale_top(5);
    surface.set_scale_width(200);
    surface.set_scale_height(100);
    // 6000 twips are 400 pixels and 200 units wide: (90 + 10) units are 200 pixels.
    write_turned_text(surface, u"A", 90, 90, 55);
    EXPECT_EQ(surface.log(), u"TextOut 90 200 133 A; CurrentX 0; CurrentY 0; ");
    surface.lack(u"TextOut");
    EXPECT_THROW(write_turned_text(surface, u"A", 90, 0, 0), base::AutomationError);
    EXPECT_EQ(surface.scale_left(), -10);
    EXPECT_EQ(surface.scale_top(), 5);
    EXPECT_EQ(surface.scale_width(), 200);
    EXPECT_EQ(surface.scale_height(), 100);
}

}  // namespace
}  // namespace tavrix::barcode
