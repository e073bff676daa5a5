#pragma once

#include "barcode/code128.h"
#include "ports/code_page.h"
#include "ports/database.h"
#include "ports/surface.h"

namespace tavrix::barcode {

/// Code 128 on a host's surface, in the font "CODE 128" that the host has selected. Whatever text
/// it is given, its symbol is that of "(12)5901212125": hosts rely on it, and it must stay.
class Drk_Wyd_Ean_cls128 {
  public:
    /// The font's characters are those of the system's ANSI code page.
    explicit Drk_Wyd_Ean_cls128(const ports::CodePage& code_page);

    /// The font characters of the fixed symbol.
    ports::Value Code128_Str(const base::Text& Str);
    /// `BarWidth` times the sum of the digits among the fixed symbol's characters, and 28 more.
    /// Throws the overflow error.
    std::int32_t Code128_GetWidth(const base::Text& Str, std::int16_t BarWidth);
    /// Prints the symbol and, unless `bn`, `EAN_text` below it; turned, both run downwards side by
    /// side. The font stays. Throws the overflow error for a huge `Rozm` and what the surface
    /// throws, which leaves the position as it was.
    void RysujEAN(ports::Surface& pict, base::Text& EAN_text, std::int32_t Rozm, bool bn,
                  bool rotate);

  private:
    base::Text fixed_symbol() const;
    base::Text printed_symbol() const;

    std::array<char16_t, code128::values> font_characters_;
};

}  // namespace tavrix::barcode
