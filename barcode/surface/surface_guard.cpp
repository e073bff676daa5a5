#include "barcode/surface/surface_guard.h"

#include "barcode/surface/host_arithmetic.h"

namespace tavrix::barcode {
SurfaceGuard::SurfaceGuard(ports::Surface& surface)
    : surface_(surface),
      x_(surface.current_x()),
      y_(surface.current_y()),
      font_name_(surface.font_name()),
      font_size_(surface.font_size()),
      font_bold_(surface.font_bold()) {}

SurfaceGuard::~SurfaceGuard() {
    attempt([&] { surface_.set_font_name(font_name_); });
    attempt([&] { surface_.set_font_size(font_size_); });
    attempt([&] { surface_.set_font_bold(font_bold_); });
    if (!restores_position_) return;
    attempt([&] { surface_.set_current_x(x_); });
    attempt([&] { surface_.set_current_y(y_); });
}

void SurfaceGuard::restore_font() {
    surface_.set_font_name(font_name_);
    surface_.set_font_size(font_size_);
    surface_.set_font_bold(font_bold_);
}

void select_caption_font(ports::Surface& surface, double points) {
    surface.set_font_name(u"Arial CE");
    surface.set_font_size(points);
}

std::int32_t font_points(const Symbology& symbology, std::int32_t size_step) {
    return checked_multiply_add(size_step, 10, symbology.smallest_points);
}

double measure_caption(ports::Surface& surface, SurfaceGuard& guard, base::TextView text) {
    constexpr double measured_points = 13;
    select_caption_font(surface, measured_points);
    guard.restore_x();
    const double height = surface.text_height(text);
    guard.restore_font();
    guard.restore_x();
    return height;
}

}  // namespace tavrix::barcode
