#pragma once

#include "fonts/font.h"

namespace tavrix::fonts {

/// The font as a TrueType file (ISO/IEC 14496-22) that Windows, Wine and FreeType install: outlines
/// without curves, a character map for Unicode, code page bits for the Latin 1 and Central European
/// ones so that a host with either gets it, and the alternates as a contextual feature.
base::Bytes to_true_type(const Font& font);

}  // namespace tavrix::fonts
