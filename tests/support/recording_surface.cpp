#include "tests/support/recording_surface.h"

#include <cmath>

#include "base/error.h"

namespace tavrix::ports {
namespace {

base::Text number(double value) {
    return base::to_decimal(std::llround(value));
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
    log_.push_back(details.empty() ? base::Text(member) : base::Text(member) + u" " + details);
}

std::vector<base::Text> RecordingSurface::logged(base::TextView member) const {
    std::vector<base::Text> lines;
    for (const base::Text& line : log_) {
        if (line.starts_with(base::Text(member))) lines.push_back(line);
    }
    return lines;
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
    note(u"FontName", base::Text(name));
    if (!missing_fonts_.contains(base::Text(name))) Canvas::set_font_name(name);
}

void RecordingSurface::set_font_size(double points) {
    note(u"FontSize", number(points));
    Canvas::set_font_size(points);
}

void RecordingSurface::set_font_bold(bool bold) {
    note(u"FontBold", bold ? u"True" : u"False");
    Canvas::set_font_bold(bold);
}

void RecordingSurface::print(base::TextView text) {
    note(u"Print", base::Text(text));
    Canvas::print(text);
}

double RecordingSurface::text_width(base::TextView text) {
    note(u"TextWidth", base::Text(text));
    return Canvas::text_width(text);
}

double RecordingSurface::text_height(base::TextView text) {
    note(u"TextHeight", base::Text(text));
    return Canvas::text_height(text);
}

void RecordingSurface::paint_picture(const Picture& picture, double x, double y, double width,
                                     double height) {
    note(u"PaintPicture",
         number(x) + u" " + number(y) + u" " + number(width) + u" " + number(height));
    Canvas::paint_picture(picture, x, y, width, height);
}

void RecordingSurface::write_turned(const TurnedText& text) {
    note(u"TextOut", number(text.angle_degrees) + u" " + number(text.x_px) + u" " +
                         number(text.y_px) + u" " + base::Text(text.text));
    Canvas::write_turned(text);
}

Bitmap RecordingSurface::bitmap() {
    note(u"Image", u"");
    Bitmap bitmap = Canvas::bitmap();
    bitmap.bits_per_pixel = depth_;
    return bitmap;
}

}  // namespace tavrix::ports
