#pragma once

#include "base/text.h"
#include "drawing/drawing.h"
#include "fonts/font.h"

namespace tavrix::drawing {

/// Where and how large a line of text is drawn: the left end of its top, the size of the em, and by
/// how much it is turned counter-clockwise around that point.
struct Line {
    double left_twips;
    double top_twips;
    double em_twips;
    double angle_degrees = 0;
};

/// Adds the outlines of `text` as one row, each point rounded to a whole twip.
void add_text(Drawing& drawing, const fonts::Font& font, base::TextView text, const Line& line);

/// Adds one line of text in the caption font below the drawing, centred, made narrower than
/// `em_twips` asks where the picture is too narrow for it, and makes the drawing that much higher.
void add_caption(Drawing& drawing, base::TextView text, std::int32_t em_twips);

}  // namespace tavrix::drawing
