#pragma once

#include "barcode/symbology.h"
#include "ports/surface.h"

namespace tavrix::barcode {

/// Remembers a surface's position and font and gives both back when the scope ends, also when
/// something throws; what the surface then refuses is passed over.
class SurfaceGuard {
  public:
    explicit SurfaceGuard(ports::Surface& surface);
    ~SurfaceGuard();
    SurfaceGuard(const SurfaceGuard&) = delete;
    SurfaceGuard& operator=(const SurfaceGuard&) = delete;

    void restore_font();
    void restore_x() { surface_.set_current_x(x_); }
    double x() const noexcept { return x_; }
    double y() const noexcept { return y_; }
    /// From now on the position stays where printing has left it.
    void keep_position() noexcept { restores_position_ = false; }

  private:
    ports::Surface& surface_;
    double x_;
    double y_;
    base::Text font_name_;
    double font_size_;
    bool font_bold_;
    bool restores_position_ = true;
};

/// The font of human-readable texts.
void select_caption_font(ports::Surface& surface, double points);

/// The size in which a symbology's bars are printed: ten points over the smallest for each step.
/// Throws the overflow error.
std::int32_t font_points(const Symbology& symbology, std::int32_t size_step);

/// Measures the height of a caption and leaves the surface as `guard` remembers it, its vertical
/// position aside.
double measure_caption(ports::Surface& surface, SurfaceGuard& guard, base::TextView text);

/// Between turned bars and the caption beside them, in scale units.
inline constexpr double turned_caption_gap = 3;
inline constexpr std::int16_t downwards_degrees = 270;

}  // namespace tavrix::barcode
