#pragma once

#include "dialogs/chart.h"
#include "drawing/picture.h"

namespace tavrix::dialogs {

/// What a chart is drawn for: a window, a sheet of paper, a file.
struct ChartLook {
    std::int32_t width_twips = 0;
    std::int32_t height_twips = 0;
    /// How wide a line is drawn at least; edges lie on multiples of it.
    double pixel_twips = 15;
    /// The size of the text.
    double em_twips = 180;
    drawing::Colour ink = 0x000000;
    drawing::Colour paper = 0xFFFFFF;
    /// False where the user's system asks for high contrast: patterns alone tell series apart.
    bool in_colour = true;
    drawing::TextWidth text_width;
};

/// The chart as a picture of exactly that size, without numbers beyond `largest_amount`. Where
/// there is nothing to draw, or no room for it, the picture says so.
drawing::Picture draw_chart(const Chart& chart, const ChartLook& look);

}  // namespace tavrix::dialogs
