#pragma once

#include "base/text.h"
#include "drawing/drawing.h"
#include "fonts/layout.h"

namespace tavrix::barcode {

/// Adds a line of text in `font`; lengths in twips.
void add_text(ports::Drawing& drawing, const fonts::Font& font, base::TextView text,
              const fonts::Line& line);

/// Adds one line of text in the caption font below the drawing, centred, made narrower than
/// `em_twips` asks where the picture is too narrow for it, and makes the drawing that much higher.
void add_caption(ports::Drawing& drawing, base::TextView text, std::int32_t em_twips);

/// The drawing turned clockwise by a multiple of 90 degrees.
ports::Drawing turned(const ports::Drawing& drawing, int quarter_turns);

}  // namespace tavrix::barcode
