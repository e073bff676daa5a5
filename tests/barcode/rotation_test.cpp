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

/// Of 4 by 3 pixels by its size; with a border, a row and a column more.
struct Box : ports::Canvas {
    explicit Box(std::int32_t border_px) : Canvas((4 + border_px) * 15, (3 + border_px) * 15) {
        fill(*this, 4 + border_px, 3 + border_px);
    }
    double width() override { return 4 * 15; }
    double height() override { return 3 * 15; }
};

TEST(Rotation, quarter_turn_counts_both_ends_of_the_size) {
    for (const std::int32_t border_px : {0, 1}) {
        Box source(border_px);
        ports::Canvas destination(10 * 15, 10 * 15);
        copy_quarter_turn(source, destination, 2, 1);
        for (std::int32_t y = 0; y <= 3; ++y) {
            for (std::int32_t x = 0; x <= 4; ++x) {
                // What lies beyond the source is not written.
                const bool is_there = x < 4 + border_px && y < 3 + border_px;
                EXPECT_EQ(destination.pixel(2 + 3 - y, 1 + x), is_there ? colour_at(x, y) : white)
                    << x << ' ' << y;
            }
        }
    }
}

TEST(Rotation, bitmaps_of_every_depth_turn_by_quarters_only) {
    const std::tuple<std::int16_t, std::int32_t, std::vector<int>> turns[] = {
        {90, 3, {0x02, 0x01, 0x00, 0x12, 0x11, 0x10, 0x22, 0x21, 0x20, 0x32, 0x31, 0x30}},
        {180, 4, {0x32, 0x22, 0x12, 0x02, 0x31, 0x21, 0x11, 0x01, 0x30, 0x20, 0x10, 0x00}},
        {270, 3, {0x30, 0x31, 0x32, 0x20, 0x21, 0x22, 0x10, 0x11, 0x12, 0x00, 0x01, 0x02}}};
    for (const auto& [depth, pixel_bytes] :
         {std::pair{8, 1u}, {15, 2u}, {16, 2u}, {24, 3u}, {32, 4u}}) {
        RecordingSurface source(4 * 15, 3 * 15);
        fill(source, 4, 3);
        source.set_depth(depth);
        for (const auto& [angle, width_px, shades] : turns) {
            RecordingSurface destination(4 * 15, 3 * 15);
            destination.set_depth(depth);
            turn_bitmap(source, destination, angle);
            EXPECT_EQ(destination.width(), width_px * 15);
            EXPECT_TRUE(destination.log().ends_with(u"Refresh; Picture; "));
            // The fourth byte of a pixel is nobody's.
            for (std::size_t i = 0; i < 12 * pixel_bytes; ++i) {
                if (i % pixel_bytes == 3) continue;
                EXPECT_EQ(destination.written.value().bits.at(i), shades[i / pixel_bytes])
                    << depth << ' ' << angle;
            }
        }
    }
    RecordingSurface source(60, 45), destination(60, 45);
    turn_bitmap(source, destination, 45);
    EXPECT_EQ(destination.log(), u"");
}

TEST(Rotation, refuses_other_depths_and_palettes) {
    const std::tuple<std::int32_t, std::uint32_t, const char16_t*, const char16_t*> cases[] = {
        {4, 0x800403E9, u"DDBHelper.GetBitmapPixels", u"Invalid number of bits per pixel: 4"},
        // The destination's, when it is another one.
        {16, 0x800403E9, u"DDBHelper.GetBitmapPixels", u"Invalid number of bits per pixel: 32"},
        {8, 0x800403EA, u"DDBHelper.MatchColorPalette", u"Error matching bitmap palette"}};
    for (const auto& [depth, number, source_name, description] : cases) {
        RecordingSurface source(60, 45), destination(60, 45);
        source.set_depth(depth);
        source.lack(u"Palette");
        try {
            turn_bitmap(source, destination, 90);
            ADD_FAILURE() << "nothing was thrown";
        } catch (const base::AutomationError& error) {
            EXPECT_EQ(static_cast<std::uint32_t>(error.number()), number);
            EXPECT_EQ(error.source(), source_name);
            EXPECT_EQ(error.description(), description);
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
