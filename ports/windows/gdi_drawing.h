#pragma once

#include "base/text.h"
#include "ports/surface.h"
#include "windows/gdi.h"

namespace tavrix::windows {

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
