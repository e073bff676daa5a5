#pragma once

#include "base/text.h"
#include "drawing/coverage.h"
#include "drawing/pixels.h"

namespace tavrix::drawing {

/// The picture as a PNG file (ISO/IEC 15948) of 256 shades from white to `colour`, which says that
/// it is to be shown at `dots_per_inch`.
base::Bytes to_png(const Coverage& picture, Colour colour, double dots_per_inch);
/// The same in the picture's own colours.
base::Bytes to_png(const Pixels& picture, double dots_per_inch);

}  // namespace tavrix::drawing
