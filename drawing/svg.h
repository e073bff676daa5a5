#pragma once

#include <string>

#include "drawing/picture.h"

namespace tavrix::drawing {

/// The drawing as an SVG 1.1 file of one line, its lengths in twips inside and in points outside.
std::string to_svg(const Drawing& drawing);
/// The same of a picture's paper and layers; labels are not written.
std::string to_svg(const Picture& picture);

}  // namespace tavrix::drawing
