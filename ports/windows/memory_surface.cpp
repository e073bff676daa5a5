#include "ports/windows/memory_surface.h"

#include <algorithm>
#include <cmath>

#include "fonts/barcode_fonts.h"
#include "windows/bstr.h"
#include "windows/failure.h"

namespace tavrix::windows {
namespace {

constexpr double twips_per_pixel = 15;
constexpr double largest_side_px = 16384;

/// The whole screen's device, given back with the scope.
class Screen {
  public:
    Screen() noexcept : device_(GetDC(nullptr)) {}
    ~Screen() { ReleaseDC(nullptr, device_); }
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;
    HDC get() const noexcept { return device_; }

  private:
    HDC device_;
};

std::int32_t pixels_of(double twips) {
    const double pixels = std::ceil(twips / twips_per_pixel);
    if (!(pixels <= largest_side_px)) drawing::throw_too_large();
    return static_cast<std::int32_t>(std::max(pixels, 1.0));
}

std::int32_t pixel_at(double twips) {
    return static_cast<std::int32_t>(std::floor(twips / twips_per_pixel));
}

const wchar_t* wide_view(base::TextView text) {
    return reinterpret_cast<const wchar_t*>(text.data());
}

}  // namespace

MemorySurface::MemorySurface() : device_(CreateCompatibleDC(nullptr)) {
    if (!device_) throw_failure(E_OUTOFMEMORY, u"CreateCompatibleDC");
    make_bitmap();
}

void MemorySurface::make_bitmap() {
    const Screen screen;
    bitmap_.reset(CreateCompatibleBitmap(screen.get(), width_px_, height_px_));
    if (!bitmap_) throw_failure(E_OUTOFMEMORY, u"CreateCompatibleBitmap");
    const Selected drawn_on(device_.get(), bitmap_.get());
    const RECT whole = {0, 0, width_px_, height_px_};
    FillRect(device_.get(), &whole, static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH)));
}

GdiBitmap MemorySurface::copy_image() const {
    GdiBitmap copy(static_cast<HBITMAP>(CopyImage(bitmap_.get(), IMAGE_BITMAP, 0, 0, 0)));
    if (!copy) throw_failure(E_OUTOFMEMORY, u"CopyImage");
    return copy;
}

GdiFont MemorySurface::own_font() const {
    const fonts::Font* bars = fonts::find_barcode_font(font_name_);
    constexpr double twips_per_point = 20;
    const double em_px = font_size_ * twips_per_point / twips_per_pixel;
    return make_font(font_name_, bars == nullptr ? em_px : fonts::readable_em_px(*bars, em_px),
                     font_bold_, 0);
}

base::Text MemorySurface::font_name() {
    const GdiFont font = own_font();
    const Selected selected(device_.get(), font.get());
    wchar_t name[LF_FACESIZE] = {};
    GetTextFaceW(device_.get(), LF_FACESIZE, name);
    return text_from_wide(name);
}

void MemorySurface::set_width(double width) {
    width_px_ = pixels_of(width);
    make_bitmap();
}

void MemorySurface::set_height(double height) {
    height_px_ = pixels_of(height);
    make_bitmap();
}

SIZE MemorySurface::extent(base::TextView text) const {
    const GdiFont font = own_font();
    const Selected selected(device_.get(), font.get());
    SIZE size{};
    GetTextExtentPoint32W(device_.get(), wide_view(text), static_cast<int>(text.size()), &size);
    return size;
}

void MemorySurface::print(base::TextView text) {
    const GdiFont font = own_font();
    const Selected drawn_on(device_.get(), bitmap_.get());
    const Selected selected(device_.get(), font.get());
    TextOutW(device_.get(), pixel_at(x_), pixel_at(y_), wide_view(text),
             static_cast<int>(text.size()));
    x_ = 0;
    y_ += text_height(text);
}

std::int32_t MemorySurface::pixel(std::int32_t x_px, std::int32_t y_px) {
    const Selected drawn_on(device_.get(), bitmap_.get());
    return static_cast<std::int32_t>(GetPixel(device_.get(), x_px, y_px));
}

void MemorySurface::set_pixel(std::int32_t x_px, std::int32_t y_px, std::int32_t colour) {
    const Selected drawn_on(device_.get(), bitmap_.get());
    SetPixel(device_.get(), x_px, y_px, static_cast<COLORREF>(colour));
}

void MemorySurface::write_turned(const ports::TurnedText& text) {
    const Selected drawn_on(device_.get(), bitmap_.get());
    write_turned_text(device_.get(), text, font_name_, font_size_, font_bold_);
}

void MemorySurface::set_bitmap(const ports::Bitmap& bitmap) {
    write_bitmap(bitmap_.get(), bitmap);
}

}  // namespace tavrix::windows
