#pragma once

#include <cmath>
#include <new>
#include <optional>
#include <set>
#include <utility>

#include "base/error.h"
#include "ports/native/canvas.h"

namespace tavrix::test {

/// A canvas that writes down what is done to it and fails on demand: as a surface that lacks a
/// property, or as a printer that stops in the middle. It measures simply, so that expectations can
/// be worked out by hand: a line is as many units high as its font has points, a character half as
/// many wide.
class RecordingSurface : public ports::Canvas {
  public:
    using Canvas::Canvas;

    /// "Print text; ", "FontName name; ", "PaintPicture x y width height; ", "TextOut angle x y
    /// text; " and so on, one behind the other.
    const base::Text& log() const noexcept { return log_; }
    const std::vector<drawing::Drawing>& painted() const noexcept { return painted_; }
    /// From now on `member` ("FontSize", "Print", ...) cannot be set or called.
    void lack(base::TextView member) { lacking_.insert(base::Text(member)); }
    /// From now on `member` answers that there is no memory.
    void exhaust(base::TextView member) { exhausted_.insert(base::Text(member)); }
    /// A font that setting its name does not select, as when it is not installed.
    void lack_font(base::TextView name) { missing_fonts_.insert(base::Text(name)); }
    /// Bitmaps have the first bytes of each pixel of 32 bits, and `written` is the last one set.
    void set_depth(std::int32_t bits_per_pixel) { depth_ = bits_per_pixel; }
    std::optional<ports::Bitmap> written;

    void set_current_x(double x) override {
        note(u"CurrentX", {x});
        Canvas::set_current_x(x);
    }
    void set_current_y(double y) override {
        note(u"CurrentY", {y});
        Canvas::set_current_y(y);
    }
    void set_font_name(base::TextView name) override {
        note(u"FontName", {}, name);
        if (!missing_fonts_.contains(base::Text(name))) Canvas::set_font_name(name);
    }
    void set_font_size(double points) override {
        note(u"FontSize", {points});
        Canvas::set_font_size(points);
    }
    void set_font_bold(bool bold) override {
        note(u"FontBold", {}, bold ? u"True" : u"False");
        Canvas::set_font_bold(bold);
    }
    void set_scale_mode(std::int32_t mode) override {
        if (lacking_.contains(u"ScaleMode")) refuse(u"ScaleMode");
        Canvas::set_scale_mode(mode);
    }
    void print(base::TextView text) override {
        note(u"Print", {}, text);
        Canvas::print(text);
    }
    double text_width(base::TextView text) override {
        note(u"TextWidth", {}, text);
        return static_cast<double>(text.size()) * font_size() / 2;
    }
    double text_height(base::TextView text) override {
        note(u"TextHeight", {}, text);
        return font_size();
    }
    void paint_picture(const ports::Picture& picture, double x, double y, double width,
                       double height) override {
        note(u"PaintPicture", {x, y, width, height});
        painted_.push_back(dynamic_cast<const ports::DrawingPicture&>(picture).drawing());
    }
    void write_turned(const ports::TurnedText& text) override {
        note(u"TextOut", {1.0 * text.angle_degrees, text.x_px, text.y_px}, text.text);
    }
    void refresh() override { note(u"Refresh"); }
    void keep_image() override { note(u"Picture"); }
    void match_palette() override { note(u"Palette"); }
    ports::Bitmap bitmap() override {
        ports::Bitmap bitmap = Canvas::bitmap();
        const std::int32_t pixel_bytes = (depth_ + 7) / 8;
        const base::Bytes full = std::exchange(bitmap.bits, {});
        for (auto pixel = full.begin(); pixel != full.end(); pixel += 4) {
            bitmap.bits.insert(bitmap.bits.end(), pixel, pixel + pixel_bytes);
        }
        bitmap.stride_bytes = bitmap.width_px * pixel_bytes;
        bitmap.bits_per_pixel = depth_;
        return bitmap;
    }
    void set_bitmap(const ports::Bitmap& bitmap) override {
        written = bitmap;
        if (depth_ == 32) Canvas::set_bitmap(bitmap);
    }

  private:
    [[noreturn]] static void refuse(base::TextView member) {
        // The hosts' run-time error 438.
        constexpr auto no_such_property = static_cast<base::ErrorNumber>(0x800A01B6);
        throw base::AutomationError(no_such_property, base::Text(member),
                                    u"Object doesn't support this property or method");
    }
    void note(base::TextView member, std::initializer_list<double> numbers = {},
              std::optional<base::TextView> word = {}) {
        if (lacking_.contains(base::Text(member))) refuse(member);
        if (exhausted_.contains(base::Text(member))) throw std::bad_alloc();
        log_ += member;
        for (const double number : numbers) log_ += u" " + base::to_decimal(std::llround(number));
        if (word) log_ += u" " + base::Text(*word);
        log_ += u"; ";
    }

    base::Text log_;
    std::vector<drawing::Drawing> painted_;
    std::set<base::Text> lacking_;
    std::set<base::Text> exhausted_;
    std::set<base::Text> missing_fonts_;
    std::int32_t depth_ = 32;
};

}  // namespace tavrix::test
