#pragma once

#include "windows/automation.h"
#include "windows/owned.h"

namespace tavrix::windows {

using GdiFont = Owned<HFONT, DeleteObject>;
using GdiBitmap = Owned<HBITMAP, DeleteObject>;
using GdiBrush = Owned<HBRUSH, DeleteObject>;
using MemoryDevice = Owned<HDC, DeleteDC>;

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
