#pragma once

#include "ports/surface.h"
#include "ports/windows/gdi_drawing.h"

namespace tavrix::windows {

/// One box of ports::PictureForm: in memory, with the screen's colours. Its only scale is twips, 15
/// to the pixel whatever the screen, and setting another one does nothing. Throws the overflow
/// error for a side of more than 16384 pixels.
class MemorySurface final : public ports::Surface {
  public:
    MemorySurface();

    /// A bitmap of its own with what is drawn now.
    GdiBitmap copy_image() const;

    double current_x() override { return x_; }
    void set_current_x(double x) override { x_ = x; }
    double current_y() override { return y_; }
    void set_current_y(double y) override { y_ = y; }
    /// The font that the system really took.
    base::Text font_name() override;
    void set_font_name(base::TextView name) override { font_name_ = name; }
    double font_size() override { return font_size_; }
    void set_font_size(double points) override { font_size_ = points; }
    bool font_bold() override { return font_bold_; }
    void set_font_bold(bool bold) override { font_bold_ = bold; }
    std::int32_t scale_mode() override { return ports::scale_twips; }
    void set_scale_mode(std::int32_t) override {}
    double scale_width() override { return width_px_ * 15.0; }
    void set_scale_width(double) override {}
    double scale_height() override { return height_px_ * 15.0; }
    void set_scale_height(double) override {}
    double scale_left() override { return 0; }
    void set_scale_left(double) override {}
    double scale_top() override { return 0; }
    void set_scale_top(double) override {}
    double width() override { return scale_width(); }
    void set_width(double width) override;
    double height() override { return scale_height(); }
    void set_height(double height) override;
    double width_on_parent(double width) override { return width; }
    double height_on_parent(double height) override { return height; }
    void print(base::TextView text) override;
    double text_width(base::TextView text) override { return extent(text).cx * 15.0; }
    double text_height(base::TextView text) override { return extent(text).cy * 15.0; }
    /// Nothing is ever painted into the boxes of the form.
    void paint_picture(const ports::Picture&, double, double, double, double) override {}
    void refresh() override {}
    void keep_image() override {}
    std::int32_t pixel(std::int32_t x_px, std::int32_t y_px) override;
    void set_pixel(std::int32_t x_px, std::int32_t y_px, std::int32_t colour) override;
    void write_turned(const ports::TurnedText& text) override;
    ports::Bitmap bitmap() override { return read_bitmap(bitmap_.get()); }
    void set_bitmap(const ports::Bitmap& bitmap) override;
    void match_palette() override {}

  private:
    SIZE extent(base::TextView text) const;
    /// A white bitmap of the present size.
    void make_bitmap();
    GdiFont own_font() const;

    MemoryDevice device_;
    GdiBitmap bitmap_;
    std::int32_t width_px_ = 1;
    std::int32_t height_px_ = 1;
    double x_ = 0;
    double y_ = 0;
    base::Text font_name_ = u"Arial CE";
    double font_size_ = 8;
    bool font_bold_ = false;
};

}  // namespace tavrix::windows
