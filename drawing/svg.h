#pragma once

#include <string>

#include "drawing/drawing.h"

namespace tavrix::drawing {

/// The drawing as an SVG 1.1 file of one line, its lengths in twips inside and in points outside.
std::string to_svg(const Drawing& drawing);

}  // namespace tavrix::drawing
