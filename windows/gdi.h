#pragma once

#include "windows/automation.h"
#include "windows/owned.h"

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

}  // namespace tavrix::windows
