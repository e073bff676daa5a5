#pragma once

#include "ports/surface.h"

namespace tavrix::barcode {

/// The surface's bitmap, 8, 15, 16, 24 or 32 bits deep; with 8 its palette is matched to the
/// system's first, so that palette indexes keep their colours. Throws error 0x800403E9, "Invalid
/// number of bits per pixel: n" for another depth, and 0x800403EA, "Error matching bitmap palette",
/// when the palette cannot be matched.
ports::Bitmap get_bitmap_pixels(ports::Surface& surface);

[[noreturn]] void throw_invalid_depth(std::int32_t bits_per_pixel);

}  // namespace tavrix::barcode
