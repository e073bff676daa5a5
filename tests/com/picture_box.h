#pragma once

#include <optional>

#include "tests/com/late_host.h"
#include "windows/gdi.h"

namespace tavrix::test {

/// A host's picture box over a bitmap in memory. Its scale is twips until somebody sets another
/// one.
class PictureBox {
  public:
    PictureBox(std::int32_t width_px, std::int32_t height_px, std::int32_t dots_per_inch);

    template <auto Property>
    auto get() {
        return this->*Property;
    }
    template <auto Property>
    void set(
        const std::remove_reference_t<decltype(std::declval<PictureBox&>().*Property)>& value) {
        this->*Property = value;
    }
    /// Setting one of them makes the scale the host's own.
    template <auto Property>
    void set_scale(const double& value) {
        this->*Property = value;
        mode_ = 0;
    }

    /// As fonts of the system do, it takes the name of the one that is there.
    void set_font_name(const base::Text& name);
    std::int32_t scale_mode() { return mode_; }
    void set_scale_mode(std::int32_t mode);
    double width() { return width_px * twips_per_pixel(); }
    double height() { return height_px * twips_per_pixel(); }
    void set_width(double twips) { resize(width_px, twips); }
    void set_height(double twips) { resize(height_px, twips); }
    std::int32_t device() { return handle(memory.get()); }
    ComPointer<IDispatch> self() { return ComPointer<IDispatch>(object); }
    std::int32_t image_handle() { return handle(bitmap.get()); }
    std::int32_t palette_handle() { return handle(palette.get()); }
    void keep_picture(const ComPointer<IDispatch>&) {}
    void refresh() {}
    double text_width(const base::Text& text) { return extent(text).cx * scale_width / width_px; }
    double text_height(const base::Text& text) {
        return extent(text).cy * scale_height / height_px;
    }
    void paint_picture(const ComPointer<IDispatch>& picture, double x, double y,
                       const std::optional<double>& width, const std::optional<double>& height);
    // The parent is the box itself, so both have one scale.
    double scale_on_parent(double length, const std::optional<std::int32_t>&,
                           const std::optional<std::int32_t>&) {
        return length;
    }

    /// Draws text where printing goes on, or a line break; false when the printer is out of paper.
    bool write_text(const base::Text& text);
    /// A script's statement.
    void print(const base::Text& text);
    /// Without arguments, or with flags in front of them.
    void default_scale() { set_scale_mode(1); }
    void scale(std::int32_t flags, const std::optional<double>& x1, const std::optional<double>& y1,
               const std::optional<double>& x2, const std::optional<double>& y2);

    // What a test looks at and sets.
    double x = 0;
    double y = 0;
    base::Text font_name = u"Arial";
    double font_size = 8;
    bool font_bold = false;
    double scale_left = 0;
    double scale_top = 0;
    double scale_width = 0;
    double scale_height = 0;
    std::int32_t width_px = 0;
    std::int32_t height_px = 0;
    windows::MemoryDevice memory;
    windows::GdiBitmap bitmap;
    windows::Owned<HPALETTE, DeleteObject> palette;
    /// What was written, piece by piece.
    std::vector<base::Text> written;
    bool out_of_paper = false;
    /// Its own automation object, not counted.
    IDispatch* object = nullptr;

    bool is_dark(std::int32_t x_px, std::int32_t y_px) const {
        return (GetPixel(memory.get(), x_px, y_px) & 0xFF) < 128;
    }

  private:
    double twips_per_pixel() const { return 1440.0 / dots_per_inch_; }
    template <typename Handle>
    static std::int32_t handle(Handle handle) {
        return static_cast<std::int32_t>(reinterpret_cast<INT_PTR>(handle));
    }
    POINT pixel_at(double x_units, double y_units) const;
    windows::GdiFont font() const;
    SIZE extent(const base::Text& text);
    void resize(std::int32_t& side_px, double twips);
    void make_bitmap();

    std::int32_t dots_per_inch_;
    std::int32_t mode_ = 1;
};

/// Makes the fonts that stand beside the program this process's own; whether all were there.
bool load_fonts();

/// VB6's picture boxes have no member Print, only the interface of that statement, and number their
/// Scale's first argument, which hosts never see. A script's object has plain members.
enum class HostKind { vb6, script };

/// The box and the object that the classes get.
struct HostedBox {
    std::shared_ptr<PictureBox> box;
    ComPointer<IDispatch> object;

    HostedBox(HostKind host, std::int32_t width_px, std::int32_t height_px,
              std::int32_t dots_per_inch = 96);
};

}  // namespace tavrix::test
