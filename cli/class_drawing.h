#pragma once

#include "drawing/drawing.h"

#include <string>

namespace tavrix::cli {

/// What the hosts' classes draw of `text`, quirks included: the class of the kind's own symbology
/// (EAN8, EAN13, EAN128) with its font selected, or the dispatcher (EAN39, EAN39EX, QR). Its
/// messages go to the standard error output. `size_step` is the classes' own measure of size.
drawing::Drawing draw_as_class(const std::string& kind, const std::string& text,
                               std::int32_t size_step, bool bare, bool rotate);

}  // namespace tavrix::cli
