#include "barcode/surface/rotation.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "barcode/surface/ddb_helper.h"
#include "barcode/surface/host_arithmetic.h"

namespace tavrix::barcode {
namespace {

using ports::Bitmap;
using ports::Surface;

/// Puts a surface into pixels and its own scale back afterwards.
class PixelScale {
  public:
    explicit PixelScale(Surface& surface)
        : surface_(surface),
          mode_(surface.scale_mode()),
          height_(surface.scale_height()),
          width_(surface.scale_width()),
          left_(surface.scale_left()),
          top_(surface.scale_top()),
          x_(surface.current_x()),
          y_(surface.current_y()) {
        surface_.set_scale_mode(ports::scale_pixels);
    }
    ~PixelScale() {
        attempt([&] { surface_.set_scale_mode(mode_); });
        // Only a scale of the host's own is more than its mode: setting a size makes any scale one.
        if (mode_ == 0) {
            attempt([&] { surface_.set_scale_height(height_); });
            attempt([&] { surface_.set_scale_width(width_); });
            attempt([&] { surface_.set_scale_left(left_); });
            attempt([&] { surface_.set_scale_top(top_); });
        }
        attempt([&] { surface_.set_current_x(x_); });
        attempt([&] { surface_.set_current_y(y_); });
    }
    PixelScale(const PixelScale&) = delete;
    PixelScale& operator=(const PixelScale&) = delete;

    double x_px(double x) { return (x - left_) * factor(surface_.scale_width(), width_); }
    double y_px(double y) { return (y - top_) * factor(surface_.scale_height(), height_); }

  private:
    static double factor(double pixels, double units) noexcept {
        return units == 0 ? 1 : pixels / units;
    }

    Surface& surface_;
    std::int32_t mode_;
    double height_, width_, left_, top_, x_, y_;
};

std::size_t bytes_per_pixel(const Bitmap& bitmap) noexcept {
    return static_cast<std::size_t>((bitmap.bits_per_pixel + 7) / 8);
}

/// Calls `move(x, y, destination_x, destination_y)` for each pixel of the source.
struct Turn {
    std::int32_t angle_degrees;
    std::int32_t width;
    std::int32_t height;

    std::int32_t x(std::int32_t from_x, std::int32_t from_y) const noexcept {
        switch (angle_degrees) {
            case 90:
                return height - 1 - from_y;
            case 180:
                return width - 1 - from_x;
            default:
                return from_y;
        }
    }
    std::int32_t y(std::int32_t from_x, std::int32_t from_y) const noexcept {
        switch (angle_degrees) {
            case 90:
                return from_x;
            case 180:
                return height - 1 - from_y;
            default:
                return width - 1 - from_x;
        }
    }
};

// In squares, because a column of a large bitmap touches a new cache line with every pixel.
template <std::size_t PixelBytes>
void turn_pixels(const Bitmap& from, Bitmap& to, const Turn& turn) {
    constexpr std::int32_t square_px = 32;
    const auto address = [](auto& bitmap, std::int32_t x, std::int32_t y) {
        return bitmap.bits.data() + static_cast<std::ptrdiff_t>(y) * bitmap.stride_bytes +
               static_cast<std::ptrdiff_t>(x) * static_cast<std::ptrdiff_t>(PixelBytes);
    };
    const auto turn_square = [&](std::int32_t left, std::int32_t top) {
        const std::int32_t right = std::min(left + square_px, from.width_px);
        const std::int32_t bottom = std::min(top + square_px, from.height_px);
        for (std::int32_t y = top; y < bottom; ++y) {
            for (std::int32_t x = left; x < right; ++x) {
                const std::int32_t to_x = turn.x(x, y);
                const std::int32_t to_y = turn.y(x, y);
                // A box that could not take the whole size shows what fits.
                if (to_x >= to.width_px || to_y >= to.height_px) continue;
                std::memcpy(address(to, to_x, to_y), address(from, x, y), PixelBytes);
            }
        }
    };
    for (std::int32_t top = 0; top < from.height_px; top += square_px) {
        for (std::int32_t left = 0; left < from.width_px; left += square_px) {
            turn_square(left, top);
        }
    }
}

// What the box has beside its inner area stays: its border.
void take_turned_size(Surface& source, Surface& destination) {
    const double border_x =
        destination.width() - destination.width_on_parent(destination.scale_width());
    const double border_y =
        destination.height() - destination.height_on_parent(destination.scale_height());
    const double width = source.height_on_parent(source.scale_height());
    const double height = source.width_on_parent(source.scale_width());
    destination.set_width(width + border_x);
    destination.set_height(height + border_y);
}

}  // namespace

void write_turned_text(Surface& surface, base::TextView text, std::int16_t angle_degrees, double x,
                       double y) {
    PixelScale scale(surface);
    surface.write_turned({text, angle_degrees, scale.x_px(x), scale.y_px(y)});
}

std::int32_t height_px(Surface& surface, double top, double height) {
    PixelScale scale(surface);
    // Each end comes to a whole pixel by itself.
    const double pixels = std::round(scale.y_px(top + height)) - std::round(scale.y_px(top));
    constexpr double largest_px = 1 << 20;
    return static_cast<std::int32_t>(std::clamp(pixels, 0.0, largest_px));
}

void copy_quarter_turn(Surface& source, Surface& destination, std::int32_t x_px,
                       std::int32_t y_px) {
    constexpr double twips_per_pixel = 15;
    const double width = source.width();
    const double height = source.height();
    // What Scale without arguments does; VB6's own picture boxes take that member's arguments only
    // with a number of flags in front, which scripts' surfaces do not know.
    source.set_scale_mode(ports::scale_twips);
    // To the even one of two neighbours, as the hosts round.
    const auto width_px = static_cast<std::int32_t>(std::nearbyint(width / twips_per_pixel));
    const auto height_px = static_cast<std::int32_t>(std::nearbyint(height / twips_per_pixel));
    for (std::int32_t x = 0; x <= width_px; ++x) {
        for (std::int32_t y = 0; y <= height_px; ++y) {
            const std::int32_t colour = source.pixel(x, y);
            if (colour >= 0) destination.set_pixel(x_px + height_px - y, y_px + x, colour);
        }
    }
}

void turn_bitmap(Surface& source, Surface& destination, std::int16_t angle_degrees) {
    if (angle_degrees != 90 && angle_degrees != 180 && angle_degrees != 270) return;
    const Bitmap from = get_bitmap_pixels(source);
    if (angle_degrees != 180) take_turned_size(source, destination);
    Bitmap to = get_bitmap_pixels(destination);
    if (to.bits_per_pixel != from.bits_per_pixel) throw_invalid_depth(to.bits_per_pixel);
    const Turn turn{angle_degrees, from.width_px, from.height_px};
    switch (bytes_per_pixel(from)) {
        case 1:
            turn_pixels<1>(from, to, turn);
            break;
        case 2:
            turn_pixels<2>(from, to, turn);
            break;
        case 3:
            turn_pixels<3>(from, to, turn);
            break;
        default:
            turn_pixels<4>(from, to, turn);
            break;
    }
    destination.set_bitmap(to);
    destination.refresh();
    destination.keep_image();
}

}  // namespace tavrix::barcode
