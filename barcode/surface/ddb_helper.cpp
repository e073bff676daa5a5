#include "barcode/surface/ddb_helper.h"

#include <algorithm>
#include <array>

#include "base/error.h"

namespace tavrix::barcode {
namespace {

// The class's own numbers in the object-error range.
constexpr auto invalid_depth = static_cast<base::ErrorNumber>(0x800403E9);
constexpr auto palette_mismatch = static_cast<base::ErrorNumber>(0x800403EA);

constexpr std::array<std::int32_t, 5> depths = {8, 15, 16, 24, 32};
constexpr std::int32_t palette_depth = 8;

void match_color_palette(ports::Surface& surface) {
    try {
        surface.match_palette();
    } catch (const base::AutomationError&) {
        throw base::AutomationError(palette_mismatch, u"DDBHelper.MatchColorPalette",
                                    u"Error matching bitmap palette");
    }
}

}  // namespace

void throw_invalid_depth(std::int32_t bits_per_pixel) {
    throw base::AutomationError(
        invalid_depth, u"DDBHelper.GetBitmapPixels",
        u"Invalid number of bits per pixel: " + base::to_decimal(bits_per_pixel));
}

ports::Bitmap get_bitmap_pixels(ports::Surface& surface) {
    ports::Bitmap bitmap = surface.bitmap();
    if (std::find(depths.begin(), depths.end(), bitmap.bits_per_pixel) == depths.end()) {
        throw_invalid_depth(bitmap.bits_per_pixel);
    }
    if (bitmap.bits_per_pixel == palette_depth) {
        match_color_palette(surface);
        bitmap = surface.bitmap();
    }
    return bitmap;
}

}  // namespace tavrix::barcode
