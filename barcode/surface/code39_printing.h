#pragma once

#include "barcode/surface/font_installer.h"
#include "barcode/symbology.h"
#include "base/currency.h"

namespace tavrix::barcode {

/// How a host wants a symbol printed.
struct PrintStyle {
    std::int32_t size_step;
    /// Without caption.
    bool bare;
    /// Downwards.
    bool rotate;
};

/// Code 39 and its extended form, which no class of their own prints.
class Code39Printing {
  public:
    explicit Code39Printing(FontInstaller fonts) : fonts_(fonts) {}

    /// Of the text last printed, in the surface's scale units.
    base::Currency height;
    base::Currency width;

    /// Prints `text` as a symbol with its caption, unless the surface has the symbology's font, and
    /// gives position and font back. Throws the overflow error for a huge size and what the surface
    /// throws.
    void print(ports::Surface& surface, const Symbology& symbology, const base::Text& text,
               const PrintStyle& style, const HostFolders& folders);

  private:
    FontInstaller fonts_;
};

}  // namespace tavrix::barcode
