#include "barcode/surface/qr_code.h"

#include "barcode/surface/rotation.h"
#include "barcode/surface/surface_guard.h"
#include "base/error.h"

namespace tavrix::barcode {
namespace {

// "Object variable not set": painting a picture that is not there.
constexpr auto no_picture = static_cast<base::ErrorNumber>(0x800A005B);

}  // namespace

base::Bytes Drk_wyd_QRcode::Utf8BytesFromString(base::TextView text) {
    return drk_wyd_QRGen::StrToUtf8(text);
}

std::unique_ptr<ports::Picture> Drk_wyd_QRcode::picture(const QrRequest& request) {
    generator_.set_xColor(is_qr_colour(request.colour) ? base::TextView(request.colour) : u"Black");
    if (request.level >= 0 && request.level <= 3) generator_.set_xEcl(request.level);
    if (request.mask >= -1 && request.mask <= 7) generator_.set_xMask(request.mask);
    generator_.set_xBoostEcl(request.boost_level);
    generator_.set_xMaxVersion(request.max_version);
    generator_.set_xMinVersion(request.min_version);
    generator_.set_xModuleSize(request.module_twips);
    generator_.set_xSquare(request.square);
    const auto drawing = generator_.QRCodegenBarcode(request.text);
    return drawing ? pictures_.from_drawing(*drawing) : nullptr;
}

void Drk_wyd_QRcode::RysujEAN(ports::Surface& pict, base::TextView text,
                              const PlacementRectangle& placement, std::int32_t Rozm, bool bn,
                              bool rotate) {
    SurfaceGuard guard(pict);
    // Measured and never used; kept because surfaces see it.
    if (rotate) measure_caption(pict, guard, text);
    const Symbology& symbology = symbology_of(Kind::qr);
    pict.set_font_size(font_points(symbology, Rozm));
    pict.set_font_bold(false);
    const auto symbol = picture({.text = base::Text(text),
                                 .boost_level = true,
                                 .colour = u"Black",
                                 .level = 1,
                                 .mask = -1,
                                 .min_version = 1,
                                 .max_version = 40,
                                 .module_twips = 120,
                                 .square = true});
    if (!symbol) throw base::AutomationError(no_picture, u"Drk_wyd_QRcode", u"No QR symbol");
    pict.paint_picture(*symbol, placement.x, placement.y, placement.width, placement.height);
    pict.set_current_x(guard.x() + placement.width);
    select_caption_font(pict, symbology.caption_points);
    if (!bn && rotate) {
        const double offset = pict.text_height(text) + turned_caption_gap;
        write_turned_text(pict, text, downwards_degrees, placement.x + placement.width + offset,
                          placement.y);
    }
}

}  // namespace tavrix::barcode
