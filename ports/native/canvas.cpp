#include "ports/native/canvas.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "base/error.h"
#include "drawing/coverage.h"
#include "drawing/text.h"
#include "fonts/barcode_fonts.h"
#include "fonts/strokes.h"

namespace tavrix::ports {
namespace {

using drawing::Drawing;
using drawing::PointTwips;
using drawing::whole_twips;

constexpr double twips_per_pixel = 15;
constexpr std::int32_t white = 0xFFFFFF;
constexpr std::size_t pixel_bytes = 4;

std::int32_t pixels_of(double twips) {
    return whole_twips(twips / twips_per_pixel);
}

std::int32_t colour_at(const std::uint8_t* pixel) {
    return pixel[2] | pixel[1] << 8 | pixel[0] << 16;
}

// Every dark run of a row becomes a rectangle.
void add_dark_runs(Drawing& drawing, const Bitmap& bitmap) {
    const auto dark = [&](std::int32_t x, std::int32_t y) {
        const std::uint8_t* pixel =
            bitmap.bits.data() + static_cast<std::ptrdiff_t>(y) * bitmap.stride_bytes + x * 4;
        return pixel[0] + pixel[1] + pixel[2] < 3 * 128;
    };
    const auto twips = [](std::int32_t px) { return whole_twips(px * twips_per_pixel); };
    for (std::int32_t y = 0; y < bitmap.height_px; ++y) {
        for (std::int32_t x = 0; x < bitmap.width_px; ++x) {
            if (!dark(x, y)) continue;
            const std::int32_t begin = x;
            while (x < bitmap.width_px && dark(x, y)) ++x;
            drawing.add_rectangle(twips(begin), twips(y), twips(x), twips(y + 1));
        }
        drawing.end_row();
    }
}

/// One of the form's two boxes.
class FormBox final : public Canvas {
  public:
    FormBox() : Canvas(1500, 1500) {}
    void set_font_size(double points) override {
        const fonts::Font* bars = fonts::find_barcode_font(font_name());
        constexpr double points_per_pixel = 72 / 96.0;
        Canvas::set_font_size(bars == nullptr
                                  ? points
                                  : fonts::readable_em_px(*bars, points / points_per_pixel) *
                                        points_per_pixel);
    }
};

class NativeForm final : public PictureForm {
  public:
    Surface& upright() override { return upright_; }
    Surface& turned() override { return turned_; }
    std::unique_ptr<Picture> turned_picture() override {
        return std::make_unique<DrawingPicture>(turned_.drawing());
    }
    void set_version(base::TextView) override {}

  private:
    FormBox upright_;
    FormBox turned_;
};

class NativePictures final : public Pictures {
  public:
    std::unique_ptr<Picture> from_drawing(const Drawing& drawing) override {
        return std::make_unique<DrawingPicture>(drawing);
    }
    std::unique_ptr<Picture> load(base::TextView path) override {
        throw base::AutomationError(base::ErrorNumber::component_failed, base::Text(path),
                                    u"Picture files are not read here");
    }
    std::unique_ptr<PictureForm> open_form() override { return std::make_unique<NativeForm>(); }
};

}  // namespace

Canvas::Canvas(std::int32_t width_twips, std::int32_t height_twips)
    : width_twips_(width_twips),
      height_twips_(height_twips),
      scale_width_(width_twips),
      scale_height_(height_twips),
      drawing_(width_twips, height_twips) {}

Drawing Canvas::drawing() const {
    if (!pixels_) return drawing_;
    Drawing drawing(whole_twips(width_twips_), whole_twips(height_twips_), drawing_.colour());
    add_dark_runs(drawing, *pixels_);
    return drawing;
}

void Canvas::set_scale_mode(std::int32_t mode) {
    scale_mode_ = mode;
    const double unit_twips = mode == scale_pixels ? twips_per_pixel : 1;
    scale_width_ = width_twips_ / unit_twips;
    scale_height_ = height_twips_ / unit_twips;
    scale_left_ = scale_top_ = 0;
}

void Canvas::set_scale_width(double width) {
    become_custom_scale();
    scale_width_ = width;
}
void Canvas::set_scale_height(double height) {
    become_custom_scale();
    scale_height_ = height;
}
void Canvas::set_scale_left(double left) {
    become_custom_scale();
    scale_left_ = left;
}
void Canvas::set_scale_top(double top) {
    become_custom_scale();
    scale_top_ = top;
}

// A box of another size has the same scale and shows what was drawn as far as it reaches.
void Canvas::set_width(double width) {
    scale_width_ *= width / width_twips_;
    width_twips_ = width;
    forget_pixels();
}
void Canvas::set_height(double height) {
    scale_height_ *= height / height_twips_;
    height_twips_ = height;
    forget_pixels();
}

void Canvas::forget_pixels() {
    pixels_.reset();
    drawing_.resize(whole_twips(width_twips_), whole_twips(height_twips_));
}

const fonts::Font& Canvas::font() const {
    const fonts::Font* found = fonts::find_barcode_font(font_name_);
    return found == nullptr ? fonts::caption_font() : *found;
}

double Canvas::text_width(base::TextView text) {
    const fonts::Font& own = font();
    return fonts::width_of(own, text) * em_twips() / own.units_per_em / twips_per_unit_x();
}

double Canvas::text_height(base::TextView) {
    const fonts::Font& own = font();
    return (own.ascent + own.descent) * em_twips() / own.units_per_em / twips_per_unit_y();
}

void Canvas::print(base::TextView text) {
    drawing::add_text(drawing_, font(), text, {left_twips(x_), top_twips(y_), em_twips()});
    x_ = scale_left_;
    y_ += Canvas::text_height(text);
}

void Canvas::write_turned(const TurnedText& text) {
    drawing::add_text(drawing_, font(), text.text,
                      {text.x_px * twips_per_pixel, text.y_px * twips_per_pixel, em_twips(),
                       static_cast<double>(text.angle_degrees)});
}

void Canvas::paint_picture(const Picture& picture, double x, double y, double width,
                           double height) {
    const auto* painted = dynamic_cast<const DrawingPicture*>(&picture);
    if (painted == nullptr) {
        throw base::AutomationError(base::ErrorNumber::type_mismatch, u"Canvas",
                                    u"Another system's picture");
    }
    const Drawing& source = painted->drawing();
    if (source.width_twips() == 0 || source.height_twips() == 0) return;
    const double left = left_twips(x);
    const double top = top_twips(y);
    const double scale_x = width * twips_per_unit_x() / source.width_twips();
    const double scale_y = height * twips_per_unit_y() / source.height_twips();
    drawing_.add_placed(source, [&](PointTwips point) {
        return PointTwips{whole_twips(left + point.x_twips * scale_x),
                          whole_twips(top + point.y_twips * scale_y)};
    });
}

Bitmap& Canvas::pixels() {
    if (pixels_) return *pixels_;
    // First, because it refuses a picture that is too large.
    const drawing::Coverage drawn = drawing::rasterise(drawing_, 1 / twips_per_pixel);
    Bitmap bitmap;
    bitmap.width_px = pixels_of(width_twips_);
    bitmap.height_px = pixels_of(height_twips_);
    bitmap.stride_bytes = bitmap.width_px * static_cast<std::int32_t>(pixel_bytes);
    bitmap.bits_per_pixel = 32;
    bitmap.bits.assign(
        static_cast<std::size_t>(bitmap.stride_bytes) * static_cast<std::size_t>(bitmap.height_px),
        0xFF);
    for (std::int32_t y = 0; y < std::min(bitmap.height_px, drawn.height_px); ++y) {
        for (std::int32_t x = 0; x < std::min(bitmap.width_px, drawn.width_px); ++x) {
            std::uint8_t* pixel =
                bitmap.bits.data() + static_cast<std::ptrdiff_t>(y) * bitmap.stride_bytes + x * 4;
            std::memset(pixel, 255 - drawn.at(x, y), 3);
        }
    }
    pixels_ = std::move(bitmap);
    return *pixels_;
}

std::uint8_t* Canvas::address(std::int32_t x_px, std::int32_t y_px) {
    Bitmap& bitmap = pixels();
    if (x_px < 0 || y_px < 0 || x_px >= bitmap.width_px || y_px >= bitmap.height_px) return nullptr;
    return bitmap.bits.data() + static_cast<std::ptrdiff_t>(y_px) * bitmap.stride_bytes + x_px * 4;
}

std::int32_t Canvas::pixel(std::int32_t x_px, std::int32_t y_px) {
    const std::uint8_t* found = address(x_px, y_px);
    return found == nullptr ? -1 : colour_at(found);
}

void Canvas::set_pixel(std::int32_t x_px, std::int32_t y_px, std::int32_t colour) {
    std::uint8_t* found = address(x_px, y_px);
    if (found == nullptr) return;
    for (int i = 0; i < 3; ++i) {
        found[2 - i] = static_cast<std::uint8_t>((colour & white) >> (8 * i));
    }
}

std::unique_ptr<Pictures> make_native_pictures() {
    return std::make_unique<NativePictures>();
}

}  // namespace tavrix::ports
