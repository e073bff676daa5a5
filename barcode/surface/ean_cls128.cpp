#include "barcode/surface/ean_cls128.h"

#include "barcode/surface/host_arithmetic.h"
#include "barcode/surface/rotation.h"
#include "barcode/surface/surface_guard.h"

namespace tavrix::barcode {
namespace {

constexpr base::TextView fixed_text = u"(12)5901212125";

std::array<char16_t, code128::values> characters_of(const ports::CodePage& code_page) {
    std::array<char16_t, code128::values> characters{};
    for (int value = 0; value < code128::values; ++value) {
        const std::uint8_t byte = code128_font_byte(value);
        const base::Text character = code_page.to_text({&byte, 1});
        // A code page without the byte: the font answers to the byte's own number too.
        characters[static_cast<std::size_t>(value)] = character.empty() ? byte : character[0];
    }
    return characters;
}

}  // namespace

Drk_Wyd_Ean_cls128::Drk_Wyd_Ean_cls128(const ports::CodePage& code_page)
    : font_characters_(characters_of(code_page)) {}

base::Text Drk_Wyd_Ean_cls128::fixed_symbol() const {
    return code128_trimmed_text(encode_code128(fixed_text), font_characters_);
}

base::Text Drk_Wyd_Ean_cls128::printed_symbol() const {
    return base::remove_characters(fixed_symbol(), u" ");
}

ports::Value Drk_Wyd_Ean_cls128::Code128_Str(const base::Text& /*Str*/) {
    return fixed_symbol();
}

std::int32_t Drk_Wyd_Ean_cls128::Code128_GetWidth(const base::Text& /*Str*/,
                                                  std::int16_t BarWidth) {
    std::int32_t sum = 0;
    for (const char16_t character : printed_symbol()) {
        if (character >= u'0' && character <= u'9') sum += character - u'0';
    }
    return checked_multiply_add(BarWidth, sum, checked_multiply_add(BarWidth, 28, 0));
}

void Drk_Wyd_Ean_cls128::RysujEAN(ports::Surface& pict, base::Text& EAN_text, std::int32_t Rozm,
                                  bool bn, bool rotate) {
    SurfaceGuard guard(pict);
    const base::Text symbol = printed_symbol();
    const double caption_height = rotate ? measure_caption(pict, guard, symbol) : 0;
    const Symbology& symbology = symbology_of(Kind::code128);
    pict.set_font_size(font_points(symbology, Rozm));
    pict.set_font_bold(false);
    if (rotate) {
        const double bars_height = pict.text_height(symbol);
        write_turned_text(pict, symbol, downwards_degrees, guard.x() + caption_height + bars_height,
                          guard.y());
    } else {
        pict.print(symbol);
    }
    guard.restore_x();
    select_caption_font(pict, symbology.caption_points);
    if (!bn && rotate) {
        const double offset = pict.text_height(EAN_text) + turned_caption_gap;
        write_turned_text(pict, EAN_text, downwards_degrees, guard.x() + offset, guard.y());
    } else if (!bn) {
        pict.print(EAN_text);
    }
    // The next print goes below: hosts that stack labels count on it.
    guard.keep_position();
}

}  // namespace tavrix::barcode
