#pragma once

#include <string>

#include "barcode/symbology.h"
#include "drawing/drawing.h"

namespace tavrix::cli {

/// What the hosts' classes draw of `text`, quirks included: the class of the symbology's own (EAN
/// and Code 128) with its font selected, or the dispatcher. Its messages go to the standard error
/// output. `size_step` is the classes' own measure of size.
drawing::Drawing draw_as_class(const barcode::Symbology& symbology, const std::string& text,
                               std::int32_t size_step, bool bare, bool rotate);

}  // namespace tavrix::cli
