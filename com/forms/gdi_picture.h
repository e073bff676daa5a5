#pragma once

#include <optional>
#include <span>
#include <vector>

#include "drawing/picture.h"
#include "windows/gdi.h"

namespace tavrix::com {

inline constexpr int twips_per_inch = 1440;

/// While it lives, a device's unit is the twip, of which `x_dots` and `y_dots` of the device's are
/// an inch.
class TwipsDevice {
  public:
    TwipsDevice(HDC device, double x_dots_per_inch, double y_dots_per_inch) noexcept;
    ~TwipsDevice();
    TwipsDevice(const TwipsDevice&) = delete;
    TwipsDevice& operator=(const TwipsDevice&) = delete;

  private:
    HDC device_;
    int state_;
};

/// Text of pictures on a device whose unit is the twip, in one face.
class GdiText {
  public:
    GdiText(HDC device, const LOGFONTW& face) noexcept : device_(device), face_(face) {}

    double width_of(base::TextView text, double em_twips, bool bold);
    void draw(const drawing::Label& label);

  private:
    struct Font {
        LONG em_twips;
        bool bold;
        int angle_degrees;
        windows::GdiFont handle;
    };
    HFONT font(double em_twips, bool bold, int angle_degrees);

    HDC device_;
    LOGFONTW face_;
    std::vector<Font> fonts_;
};

/// Paper and layers as polygons, for devices that have no pixels to smooth: a metafile, a printer.
void draw_layers(HDC device, const drawing::Picture& picture);

/// A picture's pixels with its labels, as the system keeps them.
class PictureBitmap {
  public:
    /// Draws the picture; `dots_per_inch` are the bitmap's. Throws std::bad_alloc.
    PictureBitmap(const drawing::Picture& picture, const LOGFONTW& face, int dots_per_inch);

    HDC device() const noexcept { return memory_.get(); }
    std::int32_t width_px() const noexcept { return width_px_; }
    std::int32_t height_px() const noexcept { return height_px_; }
    /// Four bytes a pixel, row after row from the top.
    std::span<const std::uint8_t> bytes() const noexcept;

  private:
    std::int32_t width_px_ = 0;
    std::int32_t height_px_ = 0;
    void* bits_ = nullptr;
    windows::GdiBitmap bitmap_;
    windows::MemoryDevice memory_;
    // What the device had before, which goes back before the bitmap goes.
    std::optional<windows::Selected> selected_;
};

}  // namespace tavrix::com
