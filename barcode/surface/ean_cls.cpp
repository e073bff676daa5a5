#include "barcode/surface/ean_cls.h"

#include <algorithm>

#include "barcode/ean.h"
#include "barcode/surface/ean_cls128.h"
#include "barcode/surface/ean_cls813.h"
#include "barcode/surface/host_arithmetic.h"
#include "barcode/surface/qr_code.h"
#include "barcode/surface/surface_guard.h"

namespace tavrix::barcode {

using base::Text;
using base::TextView;
using ports::Surface;

/// One call of the dispatcher.
struct Drk_Wyd_Ean_cls::Call {
    Surface& surface;
    Text text;
    PlacementRectangle rectangle;
    PrintStyle style;
    HostFolders folders;
};

namespace {

constexpr TextView picture_mark = u"<OBR,";

// What a print layout's designer shows where the text is not known yet.
constexpr TextView placeholders[] = {u"<1EAN z Kart BN>", u"<1EAN z Kart>", u"<EAN z PLU>"};

bool is_placeholder(TextView text) noexcept {
    return std::find(std::begin(placeholders), std::end(placeholders), text) !=
           std::end(placeholders);
}

// The scale of the helper form's boxes.
constexpr std::int32_t twips_per_pixel = 15;

/// The size step at which the helper form draws a symbol, and how long its picture has to be.
struct HelperSize {
    std::int32_t step;
    std::int32_t length_px;
};

// Decoders want bars of whole pixels, and painting into the rectangle must not undo them: the
// picture is as long as the rectangle is in the surface's own pixels, and each module in it as wide
// as there is room for.
HelperSize helper_size(Surface& surface, const PlacementRectangle& rectangle,
                       const Symbology& symbology, TextView symbol) {
    const std::int32_t modules =
        fonts::width_of(symbology.font->glyphs(), symbol) / fonts::module_units;
    std::int32_t length_px = 0;
    attempt([&] { length_px = height_px(surface, rectangle.y, rectangle.height); });
    // A poster's bars are as good when they are enlarged.
    constexpr std::int32_t largest_module_px = 16;
    length_px /= 1 + length_px / (modules * (largest_module_px + 1));
    const std::int32_t module_px = std::max(1, length_px / modules);
    // In the form's boxes a module is a pixel at step 0, and ten points are a step.
    return {(module_px - 1) * symbology.smallest_points / 10, length_px};
}

/// Gives the font name back when the scope ends, whatever the surface says.
class FontNameGuard {
  public:
    explicit FontNameGuard(Surface& surface) : surface_(surface), name_(surface.font_name()) {}
    ~FontNameGuard() {
        attempt([&] { surface_.set_font_name(name_); });
    }
    FontNameGuard(const FontNameGuard&) = delete;
    FontNameGuard& operator=(const FontNameGuard&) = delete;

  private:
    Surface& surface_;
    Text name_;
};

}  // namespace

void Drk_Wyd_Ean_cls::RysujEAN(Surface& pict, const Text& EAN_text, std::int32_t stX_Par,
                               std::int32_t Sty_Par, std::int32_t maxx_Par, std::int32_t maxy_Par,
                               std::int32_t Rozm, const Text& Rodzaj, bool beznapisów, bool rotate,
                               const Text& KatalogProgramu, const Text& WindowsDir) {
    const Call call{.surface = pict,
                    .text = is_placeholder(EAN_text) ? u"123" : EAN_text,
                    .rectangle = {static_cast<double>(stX_Par), static_cast<double>(Sty_Par),
                                  static_cast<double>(maxx_Par), static_cast<double>(maxy_Par)},
                    .style = {.size_step = Rozm, .bare = beznapisów, .rotate = rotate},
                    .folders = {KatalogProgramu, WindowsDir}};
    try {
        const FontNameGuard guard(pict);
        if (call.text.starts_with(picture_mark)) {
            paint_file(call);
        } else {
            draw_kind(call, Rodzaj);
        }
    } catch (const base::AutomationError& error) {
        // A symbol that cannot be drawn leaves its place empty, as hosts expect of a print run. A
        // size that no font can have is the caller's own mistake.
        if (error.number() == base::ErrorNumber::overflow) throw;
    }
}

void Drk_Wyd_Ean_cls::paint_file(const Call& call) {
    const TextView path = TextView(call.text).substr(picture_mark.size());
    if (path.empty()) return;
    const Text file(path.substr(0, path.size() - 1));
    if (!ports_.files.is_file(file)) return;
    const auto picture = ports_.pictures.load(file);
    call.surface.paint_picture(*picture, call.rectangle.x, call.rectangle.y, call.rectangle.width,
                               call.rectangle.height);
}

void Drk_Wyd_Ean_cls::draw_kind(const Call& call, TextView name) {
    const Symbology* symbology = find_symbology(name);
    if (symbology == nullptr) return draw_turned_ean13(call);
    const auto has_font = [&] {
        return fonts_.select(call.surface, *symbology->font, call.folders);
    };
    Text text = call.text;
    const auto [size_step, bare, rotate] = call.style;
    switch (symbology->kind) {
        case Kind::qr:
            Drk_wyd_QRcode(ports_.pictures, [this](TextView version) {
                form().set_version(version);
            }).RysujEAN(call.surface, text, call.rectangle, size_step, bare, rotate);
            break;
        case Kind::code128:
            if (has_font()) return;
            Drk_Wyd_Ean_cls128(ports_.code_page)
                .RysujEAN(call.surface, text, size_step, bare, rotate);
            break;
        case Kind::code39:
        case Kind::code39_extended:
            code39_.print(call.surface, *symbology, text, call.style, call.folders);
            break;
        case Kind::ean13:
            if (rotate) return draw_turned_ean13(call);
            if (has_font()) return;
            Drk_Wyd_Ean_cls813().RysujEAN(call.surface, text, size_step, rotate);
            break;
        case Kind::ean8:
            // To the dispatcher a name like any other.
            draw_turned_ean13(call);
            break;
    }
}

void Drk_Wyd_Ean_cls::draw_turned_ean13(const Call& call) {
    if ((call.text.size() != 12 && call.text.size() != 13) || !all_digits(call.text)) return;
    const Symbology& symbology = symbology_of(Kind::ean13);
    // The rectangle alone says how large the symbol becomes, but a size that is none is refused.
    font_points(symbology, call.style.size_step);
    Surface& upright = form().upright();
    fonts_.select(upright, *symbology.font, call.folders);
    const Text symbol = encode_ean13(call.text.substr(0, 12));
    const HelperSize size = helper_size(call.surface, call.rectangle, symbology, symbol);
    upright.set_font_size(font_points(symbology, size.step));
    // The box takes the size of the symbol, so that nothing of it is cut off.
    const double symbol_twips = upright.text_width(symbol);
    const std::int32_t spare_px =
        std::max(0, size.length_px - static_cast<std::int32_t>(symbol_twips / twips_per_pixel));
    upright.set_width(upright.width_on_parent(symbol_twips + spare_px * twips_per_pixel));
    upright.set_height(upright.height_on_parent(upright.text_height(symbol)));
    upright.set_current_x(spare_px / 2 * twips_per_pixel);
    upright.set_current_y(0);
    Text digits = call.text;
    Drk_Wyd_Ean_cls813 symbols;
    symbols.RysujEAN(upright, digits, size.step, call.style.rotate);
    constexpr std::int16_t clockwise_degrees = 90;
    symbols.RotatePicture(upright, form().turned(), clockwise_degrees);
    const auto picture = form().turned_picture();
    call.surface.paint_picture(*picture, call.rectangle.x, call.rectangle.y, call.rectangle.width,
                               call.rectangle.height);
}

void Drk_Wyd_Ean_cls::RysujEAN39(Surface& pict, const Text& EAN_text, std::int32_t Rozm, bool bn,
                                 bool rotate, const Text& KatalogProgramu, const Text& WindowsDir) {
    code39_.print(pict, symbology_of(Kind::code39), EAN_text, {Rozm, bn, rotate},
                  {KatalogProgramu, WindowsDir});
}

void Drk_Wyd_Ean_cls::RysujEAN39ex(Surface& pict, const Text& EAN_text, std::int32_t Rozm, bool bn,
                                   bool rotate, const Text& KatalogProgramu,
                                   const Text& WindowsDir) {
    code39_.print(pict, symbology_of(Kind::code39_extended), EAN_text, {Rozm, bn, rotate},
                  {KatalogProgramu, WindowsDir});
}

bool Drk_Wyd_Ean_cls::SetCzcionkę(Surface& pict, const Text& fnt, const Text& Plik, bool silent,
                                  const Text& KatalogProgramu, const Text& WindowsDir) {
    return fonts_.select(pict, fnt, Plik, silent, {KatalogProgramu, WindowsDir});
}

bool Drk_Wyd_Ean_cls::SyncShell(const Text& CommandLine, const ports::Value& /*Timeout*/,
                                const ports::Value& /*WaitForInputIdle*/, bool Hide) {
    return ports_.shell.run_and_wait(CommandLine, Hide);
}

void Drk_Wyd_Ean_cls::RotateText(Surface& Pdevice, const base::Text& text, std::int16_t angle,
                                 double X, double Y) {
    write_turned_text(Pdevice, text, angle, X, Y);
}

EmptyResult Drk_Wyd_Ean_cls::RotateSurface(Surface& SourcePicture, Surface& DestPicture,
                                           std::int32_t /*lngAngle*/, std::int32_t XDest,
                                           std::int32_t YDest) {
    copy_quarter_turn(SourcePicture, DestPicture, XDest, YDest);
    return {};
}

ports::PictureForm& Drk_Wyd_Ean_cls::form() {
    if (!form_) form_ = ports_.pictures.open_form();
    return *form_;
}

}  // namespace tavrix::barcode
