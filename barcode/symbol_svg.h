#pragma once

#include <string>
#include <vector>

#include "barcode/symbology.h"

namespace tavrix::barcode {

/// Writes many symbols of one symbology and size as SVG: the picture of draw_symbol, for labels by
/// the thousand. Every glyph's outline is one text, relative from its first to its last step, made
/// once; a symbol is those texts one behind the other.
class SymbolSvg {
  public:
    SymbolSvg(const Symbology& symbology, std::int32_t module_twips, ports::Colour colour);

    /// An SVG 1.1 file of one line.
    std::string write(base::TextView symbol) const;

  private:
    const fonts::Font& font_;
    const Symbology& symbology_;
    std::int32_t module_twips_;
    ports::Colour colour_;
    std::vector<std::string> paths_;
};

}  // namespace tavrix::barcode
