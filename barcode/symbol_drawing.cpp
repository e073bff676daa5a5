#include "barcode/symbol_drawing.h"

namespace tavrix::barcode {
namespace {

// An add-on has no guard at its end that would bring the quiet zone along.
constexpr std::int32_t add_on_quiet_modules = 5;

bool has_add_on(base::TextView symbol) noexcept {
    return symbol.find(u'[') != base::TextView::npos;
}

}  // namespace

double em_twips(const Symbology& symbology, std::int32_t module_twips) {
    return static_cast<double>(symbology.font->glyphs().units_per_em / fonts::module_units) *
           module_twips;
}

drawing::TextFrame symbol_frame(const Symbology& symbology, base::TextView symbol,
                                std::int32_t module_twips) {
    const fonts::Font& font = symbology.font->glyphs();
    constexpr std::int32_t margin_modules = 1;
    const bool ends_in_add_on = symbology.font == &fonts::ean13 && has_add_on(symbol);
    const std::int32_t width_modules = fonts::width_of(font, symbol) / fonts::module_units +
                                       2 * symbology.quiet_modules +
                                       (ends_in_add_on ? add_on_quiet_modules : 0);
    const std::int32_t height_modules =
        (font.ascent + font.descent) / fonts::module_units + 2 * margin_modules;
    const auto twips = [&](std::int32_t modules) {
        return drawing::whole_twips(static_cast<double>(modules) * module_twips);
    };
    return {twips(width_modules), twips(height_modules), twips(symbology.quiet_modules),
            twips(margin_modules)};
}

drawing::Drawing draw_symbol(const Symbology& symbology, base::TextView symbol,
                             std::int32_t module_twips, drawing::Colour colour) {
    const drawing::TextFrame frame = symbol_frame(symbology, symbol, module_twips);
    drawing::Drawing drawing(frame.width_twips, frame.height_twips, colour);
    drawing::add_text(drawing, symbology.font->glyphs(), symbol,
                      {static_cast<double>(frame.left_twips), static_cast<double>(frame.top_twips),
                       em_twips(symbology, module_twips)});
    return drawing;
}

}  // namespace tavrix::barcode
