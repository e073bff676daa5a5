#include "tests/support/recording_surface.h"

#include <cmath>

#include "base/error.h"

namespace tavrix::test {
namespace {

base::Text number(double value) {
    return u" " + base::to_decimal(std::llround(value));
}

base::Text word(base::TextView text) {
    return u" " + base::Text(text);
}

}  // namespace

void RecordingSurface::need(base::TextView member) const {
    // The hosts' run-time error 438.
    constexpr auto no_such_property = static_cast<base::ErrorNumber>(0x800A01B6);
    if (lacking_.contains(base::Text(member))) {
        throw base::AutomationError(no_such_property, base::Text(member),
                                    u"Object doesn't support this property or method");
    }
}

void RecordingSurface::note(base::TextView member, const base::Text& details) {
    need(member);
    log_ += base::Text(member) + details + u"; ";
}

double RecordingSurface::current_x() {
    need(u"CurrentX");
    return Canvas::current_x();
}

void RecordingSurface::set_current_x(double x) {
    note(u"CurrentX", number(x));
    Canvas::set_current_x(x);
}

void RecordingSurface::set_current_y(double y) {
    note(u"CurrentY", number(y));
    Canvas::set_current_y(y);
}

base::Text RecordingSurface::font_name() {
    need(u"FontName");
    return Canvas::font_name();
}

void RecordingSurface::set_font_name(base::TextView name) {
    note(u"FontName", word(name));
    if (!missing_fonts_.contains(base::Text(name))) Canvas::set_font_name(name);
}

void RecordingSurface::set_font_size(double points) {
    note(u"FontSize", number(points));
    Canvas::set_font_size(points);
}

void RecordingSurface::set_font_bold(bool bold) {
    note(u"FontBold", word(bold ? u"True" : u"False"));
    Canvas::set_font_bold(bold);
}

void RecordingSurface::print(base::TextView text) {
    note(u"Print", word(text));
    Canvas::print(text);
}

double RecordingSurface::text_width(base::TextView text) {
    note(u"TextWidth", word(text));
    return static_cast<double>(text.size()) * font_size() / 2;
}

double RecordingSurface::text_height(base::TextView text) {
    note(u"TextHeight", word(text));
    return font_size();
}

void RecordingSurface::paint_picture(const ports::Picture& picture, double x, double y,
                                     double width, double height) {
    note(u"PaintPicture", number(x) + number(y) + number(width) + number(height));
    painted_.push_back(dynamic_cast<const ports::DrawingPicture&>(picture).drawing());
}

void RecordingSurface::write_turned(const ports::TurnedText& text) {
    note(u"TextOut",
         number(text.angle_degrees) + number(text.x_px) + number(text.y_px) + word(text.text));
}

ports::Bitmap RecordingSurface::bitmap() {
    note(u"Image");
    const ports::Bitmap full = Canvas::bitmap();
    const std::int32_t pixel_bytes = (depth_ + 7) / 8;
    ports::Bitmap bitmap{full.width_px, full.height_px, full.width_px * pixel_bytes, depth_, {}};
    for (std::size_t i = 0; i < full.bits.size(); i += 4) {
        const auto pixel = full.bits.begin() + static_cast<std::ptrdiff_t>(i);
        bitmap.bits.insert(bitmap.bits.end(), pixel, pixel + pixel_bytes);
    }
    return bitmap;
}

void RecordingSurface::set_bitmap(const ports::Bitmap& bitmap) {
    written = bitmap;
    if (depth_ == 32) Canvas::set_bitmap(bitmap);
}

}  // namespace tavrix::test
