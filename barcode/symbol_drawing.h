#pragma once

#include "barcode/symbology.h"
#include "drawing/text_svg.h"

namespace tavrix::barcode {

// For symbologies that have a font.

/// The size of the em at which a module of the symbology's font is `module_twips` wide.
double em_twips(const Symbology& symbology, std::int32_t module_twips);

/// A symbol's picture with its quiet zones at both ends and a white module above and below.
drawing::TextFrame symbol_frame(const Symbology& symbology, base::TextView symbol,
                                std::int32_t module_twips);

/// `symbol` in the font's glyphs in its frame. Bars are exact multiples of `module_twips`.
drawing::Drawing draw_symbol(const Symbology& symbology, base::TextView symbol,
                             std::int32_t module_twips, drawing::Colour colour);

}  // namespace tavrix::barcode
