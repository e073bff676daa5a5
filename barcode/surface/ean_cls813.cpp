#include "barcode/surface/ean_cls813.h"

#include "barcode/ean.h"
#include "barcode/surface/host_arithmetic.h"
#include "barcode/surface/surface_guard.h"

namespace tavrix::barcode {

using base::Text;

Text Drk_Wyd_Ean_cls813::EAN8(const Text& chaine) {
    return encode_ean8(chaine);
}

Text Drk_Wyd_Ean_cls813::EAN13(const Text& chaine) {
    return encode_ean13(chaine);
}

Text Drk_Wyd_Ean_cls813::AddOn(const Text& chaine) {
    return encode_add_on(chaine);
}

Text Drk_Wyd_Ean_cls813::BinaryByte(std::uint8_t Value) {
    return binary_byte(Value);
}

void Drk_Wyd_Ean_cls813::RysujEAN(ports::Surface& pict, Text& EAN_text, std::int32_t Rozm,
                                  bool rotate) {
    constexpr std::size_t digits_looked_at = 6;
    if (!begins_with_nonzero_number(base::TextView(EAN_text).substr(0, digits_looked_at))) {
        pict.print(EAN_text);
        return;
    }
    SurfaceGuard guard(pict);
    // Measured and never used; kept because surfaces see it.
    if (rotate) measure_caption(pict, guard, encode_add_on(EAN_text));
    if (EAN_text.size() == 8 || EAN_text.size() == 13) EAN_text.pop_back();
    const Text symbol = EAN_text.size() == 7 ? encode_ean8(EAN_text) : encode_ean13(EAN_text);
    pict.set_font_size(font_points(symbology_of(Kind::ean13), Rozm));
    pict.set_font_bold(false);
    // No text is both a symbol's and an add-on's, so the add-on never shows; kept as hosts know it.
    pict.print(symbol + encode_add_on(EAN_text));
    // Of the digits, not of the symbol: hosts lay out their labels by these numbers.
    width_ = base::Currency::from(pict.text_width(EAN_text));
    height_ = base::Currency::from(pict.text_height(EAN_text));
}

void Drk_Wyd_Ean_cls813::RotatePicture(ports::Surface& fr_pic, ports::Surface& to_pic,
                                       std::int16_t angle) {
    turn_bitmap(fr_pic, to_pic, angle);
}

EmptyResult Drk_Wyd_Ean_cls813::RotateSurface2(ports::Surface& SourcePicture,
                                               ports::Surface& DestPicture,
                                               std::int32_t /*lngAngle*/, std::int32_t XDest,
                                               std::int32_t YDest) {
    copy_quarter_turn(SourcePicture, DestPicture, XDest, YDest);
    return {};
}

}  // namespace tavrix::barcode
