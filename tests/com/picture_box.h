#pragma once

#include <cmath>

#include "tests/com/late_host.h"
#include "windows/gdi.h"

namespace tavrix::test {

/// A host's picture box over a bitmap in memory: what the classes need of one and no more, every
/// member by name only. Its scale is twips, 15 to the pixel, until somebody sets another mode.
class PictureBox {
  public:
    PictureBox(std::int32_t width_px, std::int32_t height_px);

    template <auto Property>
    auto get() {
        return this->*Property;
    }
    template <auto Property>
    void set(
        const std::remove_reference_t<decltype(std::declval<PictureBox&>().*Property)>& value) {
        this->*Property = value;
    }

    double scale_width() { return width_px * unit(); }
    double scale_height() { return height_px * unit(); }
    double width() { return width_px * 15.0; }
    double height() { return height_px * 15.0; }
    void set_width(double twips) { resize(pixels(twips, 15), height_px); }
    void set_height(double twips) { resize(width_px, pixels(twips, 15)); }
    std::int32_t device() { return handle(memory.get()); }
    ComPointer<IDispatch> self() { return ComPointer<IDispatch>(object); }
    std::int32_t image_handle() { return handle(bitmap.get()); }
    void keep_picture(const ComPointer<IDispatch>&) {}
    void scale() { scale_mode = 1; }
    void refresh() {}
    void print(const base::Text& text);
    double text_width(const base::Text& text) { return extent(text).cx * unit(); }
    double text_height(const base::Text& text) { return extent(text).cy * unit(); }
    void paint_picture(const ComPointer<IDispatch>& picture, double x, double y, double width,
                       double height);
    // The parent is the box itself, so both have one scale.
    double scale_on_parent(double length, std::int32_t, std::int32_t) { return length; }

    // What a test looks at and sets.
    double x = 0;
    double y = 0;
    base::Text font_name = u"Arial";
    double font_size = 8;
    bool font_bold = false;
    std::int32_t scale_mode = 1;
    double scale_left = 0;
    double scale_top = 0;
    std::int32_t width_px = 0;
    std::int32_t height_px = 0;
    windows::MemoryDevice memory;
    windows::GdiBitmap bitmap;
    /// Its own automation object, not counted.
    IDispatch* object = nullptr;

    bool is_dark(std::int32_t x_px, std::int32_t y_px) const {
        return (GetPixel(memory.get(), x_px, y_px) & 0xFF) < 128;
    }

  private:
    double unit() const { return scale_mode == 3 ? 1 : 15; }
    template <typename Handle>
    static std::int32_t handle(Handle handle) {
        return static_cast<std::int32_t>(reinterpret_cast<INT_PTR>(handle));
    }
    static int pixels(double length, double unit) {
        return static_cast<int>(std::lround(length / unit));
    }
    void resize(std::int32_t new_width_px, std::int32_t new_height_px);
    SIZE extent(const base::Text& text);
};

/// The box and the object that the classes get.
struct HostedBox {
    std::shared_ptr<PictureBox> box;
    ComPointer<IDispatch> object;

    HostedBox(std::int32_t width_px, std::int32_t height_px);
};

}  // namespace tavrix::test
