#pragma once

#include "drawing/picture.h"

namespace tavrix::drawing {

/// A picture in colours: four bytes for each pixel, blue, green, red and one that is 0, row after
/// row from the top.
struct Pixels {
    std::int32_t width_px = 0;
    std::int32_t height_px = 0;
    std::vector<std::uint8_t> bytes;

    Colour at(std::int32_t x, std::int32_t y) const noexcept {
        const std::size_t first =
            4 * (static_cast<std::size_t>(y) * static_cast<std::size_t>(width_px) +
                 static_cast<std::size_t>(x));
        return static_cast<Colour>(bytes[first] << 16 | bytes[first + 1] << 8 | bytes[first + 2]);
    }
};

/// The picture's layers at `pixels_per_twip`, its size rounded up to whole pixels, edges smoothed.
/// Labels are not drawn. Throws base::AutomationError for more than 2^28 pixels.
Pixels to_pixels(const Picture& picture, double pixels_per_twip);

}  // namespace tavrix::drawing
