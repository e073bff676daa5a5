#pragma once

#include <optional>

#include "fonts/font.h"
#include "ports/surface.h"

namespace tavrix::ports {

/// A picture box in memory. It keeps what is drawn as polygons, so that it can become SVG, until
/// somebody asks for its pixels; it has 15 twips to the pixel then. Has the barcode fonts; every
/// other font is the caption font and keeps its name.
class Canvas : public Surface {
  public:
    Canvas(std::int32_t width_twips, std::int32_t height_twips);

    /// All that was drawn, pixels as rectangles.
    drawing::Drawing drawing() const;

    double current_x() override { return x_; }
    void set_current_x(double x) override { x_ = x; }
    double current_y() override { return y_; }
    void set_current_y(double y) override { y_ = y; }
    base::Text font_name() override { return font_name_; }
    void set_font_name(base::TextView name) override { font_name_ = name; }
    double font_size() override { return font_size_; }
    void set_font_size(double points) override { font_size_ = points; }
    bool font_bold() override { return font_bold_; }
    void set_font_bold(bool bold) override { font_bold_ = bold; }
    std::int32_t scale_mode() override { return scale_mode_; }
    void set_scale_mode(std::int32_t mode) override;
    double scale_width() override { return scale_width_; }
    void set_scale_width(double width) override;
    double scale_height() override { return scale_height_; }
    void set_scale_height(double height) override;
    double scale_left() override { return scale_left_; }
    void set_scale_left(double left) override;
    double scale_top() override { return scale_top_; }
    void set_scale_top(double top) override;
    double width() override { return width_twips_; }
    void set_width(double width) override;
    double height() override { return height_twips_; }
    void set_height(double height) override;
    double width_on_parent(double width) override { return width * twips_per_unit_x(); }
    double height_on_parent(double height) override { return height * twips_per_unit_y(); }
    void print(base::TextView text) override;
    double text_width(base::TextView text) override;
    double text_height(base::TextView text) override;
    void paint_picture(const Picture& picture, double x, double y, double width,
                       double height) override;
    void refresh() override {}
    void keep_image() override {}
    std::int32_t pixel(std::int32_t x_px, std::int32_t y_px) override;
    void set_pixel(std::int32_t x_px, std::int32_t y_px, std::int32_t colour) override;
    void write_turned(const TurnedText& text) override;
    Bitmap bitmap() override { return pixels(); }
    void set_bitmap(const Bitmap& bitmap) override { pixels_ = bitmap; }
    void match_palette() override {}

  private:
    double twips_per_unit_x() const { return width_twips_ / scale_width_; }
    double twips_per_unit_y() const { return height_twips_ / scale_height_; }
    double left_twips(double x) const { return (x - scale_left_) * twips_per_unit_x(); }
    double top_twips(double y) const { return (y - scale_top_) * twips_per_unit_y(); }
    const fonts::Font& font() const;
    double em_twips() const { return font_size_ * 20; }
    void become_custom_scale() { scale_mode_ = 0; }
    void forget_pixels();
    Bitmap& pixels();
    std::uint8_t* address(std::int32_t x_px, std::int32_t y_px);

    double width_twips_;
    double height_twips_;
    double x_ = 0;
    double y_ = 0;
    base::Text font_name_ = u"Arial CE";
    double font_size_ = 8;
    bool font_bold_ = false;
    std::int32_t scale_mode_ = scale_twips;
    double scale_width_;
    double scale_height_;
    double scale_left_ = 0;
    double scale_top_ = 0;
    drawing::Drawing drawing_;
    /// Once there, the truth instead of the drawing.
    std::optional<Bitmap> pixels_;
};

/// The portable description itself.
class DrawingPicture final : public Picture {
  public:
    explicit DrawingPicture(drawing::Drawing drawing) : drawing_(std::move(drawing)) {}
    const drawing::Drawing& drawing() const noexcept { return drawing_; }

  private:
    drawing::Drawing drawing_;
};

/// Makes DrawingPictures and forms of two canvases; loads no files.
std::unique_ptr<Pictures> make_native_pictures();

}  // namespace tavrix::ports
