#include "barcode/surface/code39_printing.h"

#include "barcode/code39.h"
#include "barcode/surface/rotation.h"
#include "barcode/surface/surface_guard.h"

namespace tavrix::barcode {

void Code39Printing::print(ports::Surface& surface, const Symbology& symbology,
                           const base::Text& text, const PrintStyle& style,
                           const HostFolders& folders) {
    SurfaceGuard guard(surface);
    const double caption_height = style.rotate ? measure_caption(surface, guard, text) : 0;
    if (fonts_.select(surface, *symbology.font, folders)) return;
    surface.set_font_size(font_points(symbology, style.size_step));
    const base::Text symbol = wrap_code39(text);
    if (style.rotate) {
        write_turned_text(surface, symbol, downwards_degrees,
                          guard.x() + caption_height + surface.text_height(symbol), guard.y());
    } else {
        surface.print(symbol);
    }
    // Of the text, not of the symbol: hosts lay out their labels by these numbers.
    width = base::Currency::from(surface.text_width(text));
    height = base::Currency::from(surface.text_height(text));
    if (style.bare) return;
    guard.restore_x();
    select_caption_font(surface, symbology.caption_points);
    if (style.rotate) {
        const double offset = surface.text_height(text) + turned_caption_gap;
        write_turned_text(surface, text, downwards_degrees, guard.x() + offset, guard.y());
    } else {
        surface.print(text);
    }
}

}  // namespace tavrix::barcode
