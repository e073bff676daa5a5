#pragma once

#include "com/forms/gdi_picture.h"
#include "dialogs/chart_picture.h"

namespace tavrix::com {

// A chart that leaves its window. All of these draw it anew in black on white. Failures throw
// base::AutomationError with the system's words unless told otherwise.

/// What is drawn, in which face, at the size in twips that it has on the screen.
struct ChartToSend {
    const dialogs::Chart& chart;
    LOGFONTW face;
    std::int32_t width_twips;
    std::int32_t height_twips;
    double em_twips;
};

/// The clipboard gets the chart as a metafile and as a bitmap, and its table as text; `owner` is
/// the window in whose name. False when another program keeps the clipboard to itself.
bool copy_chart(const ChartToSend& sent, HWND owner);

/// A PNG file at twice the resolution of the screen, in the place of what is at `path`, which stays
/// until the new one is whole.
void save_chart(const ChartToSend& sent, const base::Text& path);

/// One page on the printer of that name, lengthwise where the chart is, as large as the paper
/// allows with the proportions of the screen, in its middle. What the printer refuses is abandoned;
/// what the user calls off as well, but is no failure.
void print_chart(const ChartToSend& sent, const base::Text& printer_name);

}  // namespace tavrix::com
