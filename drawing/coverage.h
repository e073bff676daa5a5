#pragma once

#include <cstdint>
#include <vector>

#include "drawing/drawing.h"

namespace tavrix::drawing {

/// A grey picture: how much of each pixel is dark, 0 to 255, row after row from the top.
struct Coverage {
    std::int32_t width_px = 0;
    std::int32_t height_px = 0;
    std::vector<std::uint8_t> dark;

    std::uint8_t at(std::int32_t x, std::int32_t y) const noexcept {
        return dark[static_cast<std::size_t>(y) * static_cast<std::size_t>(width_px) +
                    static_cast<std::size_t>(x)];
    }
};

/// The drawing at `pixels_per_twip`, its size rounded up to whole pixels. An edge that lies between
/// two pixels is exact; any other gives its pixels the share that it covers. Throws
/// base::AutomationError for more than 2^28 pixels.
Coverage rasterise(const Drawing& drawing, double pixels_per_twip);

}  // namespace tavrix::drawing
