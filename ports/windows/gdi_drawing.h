#pragma once

#include "base/text.h"
#include "ports/surface.h"
#include "windows/gdi.h"

namespace tavrix::windows {

/// The size of the em in the device's pixels.
double em_pixels(HDC device, double points);

/// A font, not smoothed: a bar's edge must not be grey. Throws base::AutomationError, the overflow
/// error for an em that no device can draw.
GdiFont make_font(base::TextView name, double em_px, bool bold, std::int32_t angle_degrees);

/// Writes a turned line in the font of that name and size, in the device's pixels.
void write_turned_text(HDC device, const ports::TurnedText& text, base::TextView font_name,
                       double points, bool bold);

/// A bitmap's pixels as the system keeps them, and back.
ports::Bitmap read_bitmap(HBITMAP bitmap);
void write_bitmap(HBITMAP bitmap, const ports::Bitmap& pixels);

/// Makes a picture's palette agree with the system's, so that the indexes of its bitmap keep their
/// colours. Throws base::AutomationError, also for a picture without a palette.
void match_palette(HDC device, HPALETTE palette);

}  // namespace tavrix::windows
