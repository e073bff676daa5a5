#pragma once

#include "drawing/picture.h"

namespace tavrix::drawing {

// Text where no system draws any: the caption font's outlines. It has one weight, and signs that it
// lacks give way to those of ASCII.

double caption_width(base::TextView text, double em_twips, bool bold);

/// The same picture, its labels one layer more.
Picture with_captions(Picture picture);

}  // namespace tavrix::drawing
