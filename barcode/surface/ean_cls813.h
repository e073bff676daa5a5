#pragma once

#include "barcode/surface/rotation.h"
#include "base/currency.h"
#include "ports/surface.h"

namespace tavrix::barcode {

/// EAN-8 and EAN-13 on a host's surface, in the font "code ean13" that the host has selected.
class Drk_Wyd_Ean_cls813 {
  public:
    /// Height and width of the digits last drawn, in the surface's scale units.
    base::Currency wys() const noexcept { return height_; }
    void set_wys(base::Currency height) noexcept { height_ = height; }
    base::Currency szer() const noexcept { return width_; }
    void set_szer(base::Currency width) noexcept { width_ = width; }

    base::Text EAN8(const base::Text& chaine);
    base::Text EAN13(const base::Text& chaine);
    base::Text AddOn(const base::Text& chaine);
    base::Text BinaryByte(std::uint8_t Value);

    /// Prints the symbol at the surface's position, which stays, as does its font. `EAN_text` loses
    /// its check digit, which is computed again; a text that begins with no number but 0 is printed
    /// as it is. Throws the overflow error for a huge `Rozm` and what the surface throws.
    void RysujEAN(ports::Surface& pict, base::Text& EAN_text, std::int32_t Rozm, bool rotate);

    /// See turn_bitmap.
    void RotatePicture(ports::Surface& fr_pic, ports::Surface& to_pic, std::int16_t angle);
    /// See copy_quarter_turn; the angle is ignored. The result stays empty.
    EmptyResult RotateSurface2(ports::Surface& SourcePicture, ports::Surface& DestPicture,
                               std::int32_t lngAngle, std::int32_t XDest, std::int32_t YDest);

  private:
    base::Currency height_;
    base::Currency width_;
};

}  // namespace tavrix::barcode
