#pragma once

#include "ports/surface.h"
#include "ports/windows/automation.h"
#include "ports/windows/owned.h"

namespace tavrix::windows {

template <typename Object>
struct GdiObjectTraits {
    using Handle = Object;
    static void free(Object object) noexcept { DeleteObject(object); }
};
using GdiFont = Owned<GdiObjectTraits<HFONT>>;
using GdiBitmap = Owned<GdiObjectTraits<HBITMAP>>;
using GdiBrush = Owned<GdiObjectTraits<HBRUSH>>;

struct MemoryDeviceTraits {
    using Handle = HDC;
    static void free(HDC device) noexcept { DeleteDC(device); }
};
using MemoryDevice = Owned<MemoryDeviceTraits>;

/// Selects an object into a device for as long as the scope lasts.
class Selected {
  public:
    Selected(HDC device, HGDIOBJ object) noexcept
        : device_(device), before_(SelectObject(device, object)) {}
    ~Selected() {
        if (before_ != nullptr) SelectObject(device_, before_);
    }
    Selected(const Selected&) = delete;
    Selected& operator=(const Selected&) = delete;

  private:
    HDC device_;
    HGDIOBJ before_;
};

/// A font for `device`, not smoothed: a bar's edge must not be grey. Throws base::AutomationError.
GdiFont make_font(HDC device, base::TextView name, double points, bool bold,
                  std::int32_t angle_degrees);

/// Writes a turned line in the font of that name and size, in the device's pixels.
void write_turned_text(HDC device, const ports::TurnedText& text, base::TextView font_name,
                       double points, bool bold);

/// A bitmap's pixels as the system keeps them, and back.
ports::Bitmap read_bitmap(HBITMAP bitmap);
void write_bitmap(HBITMAP bitmap, const ports::Bitmap& pixels);

/// Makes `palette` agree with the system's as far as `device` can show it.
void match_palette(HDC device, HPALETTE palette);

}  // namespace tavrix::windows
