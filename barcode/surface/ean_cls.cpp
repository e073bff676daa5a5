#include "barcode/surface/ean_cls.h"

#include <algorithm>

#include "barcode/code39.h"
#include "barcode/ean.h"
#include "barcode/surface/automation.h"
#include "barcode/surface/ean_cls128.h"
#include "barcode/surface/ean_cls813.h"
#include "barcode/surface/qr_code.h"
#include "barcode/surface/surface_guard.h"

namespace tavrix::barcode {

using base::Text;
using base::TextView;
using ports::Surface;

/// A font by its name and its file's name without extension.
struct Drk_Wyd_Ean_cls::FontFile {
    const char16_t* name;
    const char16_t* file;
};

/// One call of the dispatcher.
struct Drk_Wyd_Ean_cls::Call {
    Surface& surface;
    Text text;
    PlacementRectangle rectangle;
    std::int32_t size;
    bool bare;
    bool rotate;
    const Text& program_folder;
    const Text& windows_folder;
};

namespace {

constexpr TextView picture_mark = u"<OBR,";

// What a print layout's designer shows where the text is not known yet.
constexpr TextView placeholders[] = {u"<1EAN z Kart BN>", u"<1EAN z Kart>", u"<EAN z PLU>"};

bool is_placeholder(TextView text) noexcept {
    return std::find(std::begin(placeholders), std::end(placeholders), text) !=
           std::end(placeholders);
}

bool is_font(Surface& surface, const Text& name) {
    return base::equal_case_blind(surface.font_name(), name);
}

// False also when the surface cannot say.
bool select_font(Surface& surface, const Text& name) {
    bool selected = false;
    attempt([&] { surface.set_font_name(name); });
    attempt([&] { selected = is_font(surface, name); });
    return selected;
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
                    .size = Rozm,
                    .bare = beznapisów,
                    .rotate = rotate,
                    .program_folder = KatalogProgramu,
                    .windows_folder = WindowsDir};
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

void Drk_Wyd_Ean_cls::draw_kind(const Call& call, TextView kind) {
    Text text = call.text;
    if (kind == u"QR") {
        Drk_wyd_QRcode symbol(ports_.pictures,
                              [this](TextView version) { form().set_version(version); });
        symbol.RysujEAN(call.surface, text, call.rectangle, call.size, call.bare, call.rotate);
    } else if (kind == u"EAN128") {
        if (ensure_font(call.surface, {u"CODE 128", u"code128"}, call.program_folder,
                        call.windows_folder)) {
            return;
        }
        Drk_Wyd_Ean_cls128(ports_.code_page)
            .RysujEAN(call.surface, text, call.size, call.bare, call.rotate);
    } else if (kind == u"EAN13" && !call.rotate) {
        if (ensure_font(call.surface, {u"code ean13", u"ean13"}, call.program_folder,
                        call.windows_folder)) {
            return;
        }
        Drk_Wyd_Ean_cls813().RysujEAN(call.surface, text, call.size, call.rotate);
    } else if (kind == u"EAN39") {
        RysujEAN39(call.surface, text, call.size, call.bare, call.rotate, call.program_folder,
                   call.windows_folder);
    } else if (kind == u"EAN39EX") {
        RysujEAN39ex(call.surface, text, call.size, call.bare, call.rotate, call.program_folder,
                     call.windows_folder);
    } else {
        draw_turned_ean13(call);
    }
}

void Drk_Wyd_Ean_cls::draw_turned_ean13(const Call& call) {
    if ((call.text.size() != 12 && call.text.size() != 13) || !all_digits(call.text)) return;
    Surface& upright = form().upright();
    ensure_font(upright, {u"code ean13", u"ean13"}, call.program_folder, call.windows_folder);
    // The box takes the size of the symbol, so that nothing of it is cut off.
    upright.set_font_size(checked_multiply_add(call.size, 10, 48));
    const Text symbol = encode_ean13(call.text.substr(0, 12));
    upright.set_width(upright.width_on_parent(upright.text_width(symbol)));
    upright.set_height(upright.height_on_parent(upright.text_height(symbol)));
    upright.set_current_x(0);
    upright.set_current_y(0);
    Text digits = call.text;
    Drk_Wyd_Ean_cls813 symbols;
    symbols.RysujEAN(upright, digits, call.size, call.rotate);
    constexpr std::int16_t clockwise_degrees = 90;
    symbols.RotatePicture(upright, form().turned(), clockwise_degrees);
    const auto picture = form().turned_picture();
    call.surface.paint_picture(*picture, call.rectangle.x, call.rectangle.y, call.rectangle.width,
                               call.rectangle.height);
}

void Drk_Wyd_Ean_cls::RysujEAN39(Surface& pict, const Text& EAN_text, std::int32_t Rozm, bool bn,
                                 bool rotate, const Text& KatalogProgramu, const Text& WindowsDir) {
    draw_code39(pict, EAN_text, Rozm, bn, rotate, {u"free 3 of 9", u"free3of9"}, KatalogProgramu,
                WindowsDir);
}

void Drk_Wyd_Ean_cls::RysujEAN39ex(Surface& pict, const Text& EAN_text, std::int32_t Rozm, bool bn,
                                   bool rotate, const Text& KatalogProgramu,
                                   const Text& WindowsDir) {
    draw_code39(pict, EAN_text, Rozm, bn, rotate, {u"Free 3 of 9 Extended", u"fre3of9x"},
                KatalogProgramu, WindowsDir);
}

void Drk_Wyd_Ean_cls::draw_code39(Surface& surface, const Text& text, std::int32_t size, bool bare,
                                  bool rotate, const FontFile& font, const Text& program_folder,
                                  const Text& windows_folder) {
    SurfaceGuard guard(surface);
    const double caption_height = rotate ? measure_caption(surface, guard, text) : 0;
    if (ensure_font(surface, font, program_folder, windows_folder)) return;
    surface.set_font_size(checked_multiply_add(size, 10, 48));
    const Text symbol = wrap_code39(text);
    if (rotate) {
        write_turned_text(surface, symbol, downwards_degrees,
                          guard.x() + caption_height + surface.text_height(symbol), guard.y());
    } else {
        surface.print(symbol);
    }
    width_ = base::Currency::from(surface.text_width(text));
    height_ = base::Currency::from(surface.text_height(text));
    if (bare) return;
    guard.restore_x();
    select_caption_font(surface, caption_points);
    if (rotate) {
        const double offset = surface.text_height(text) + turned_caption_gap;
        write_turned_text(surface, text, downwards_degrees, guard.x() + offset, guard.y());
    } else {
        surface.print(text);
    }
}

bool Drk_Wyd_Ean_cls::ensure_font(Surface& surface, const FontFile& font,
                                  const Text& program_folder, const Text& windows_folder) {
    return SetCzcionkę(surface, font.name, font.file, true, program_folder, windows_folder);
}

bool Drk_Wyd_Ean_cls::SetCzcionkę(Surface& pict, const Text& fnt, const Text& Plik, bool silent,
                                  const Text& KatalogProgramu, const Text& WindowsDir) {
    if (select_font(pict, fnt)) return true;
    install_font(Plik + u".ttf", KatalogProgramu, WindowsDir);
    if (select_font(pict, fnt)) return true;
    // A host's True is -1.
    attempt([&] {
        ports_.shell.show_message(u"Proszę zainstalować czcionkę " + fnt + u"(" + Plik + u")",
                                  silent ? -1 : 0);
    });
    return false;
}

// Each step is tried, whatever became of the one before.
void Drk_Wyd_Ean_cls::install_font(const Text& file, const Text& program_folder,
                                   const Text& windows_folder) {
    ports::Shell& shell = ports_.shell;
    const Text fonts_folder = windows_folder + u"\\Fonts";
    const Text installed = fonts_folder + u"\\" + file;
    const Text supplied = program_folder + u"\\" + file;
    ports::Files& files = ports_.files;
    if (!files.is_file(installed) && files.is_file(supplied)) {
        attempt([&] { files.copy(supplied, installed); });
    }
    if (!files.is_file(installed)) return;
    attempt([&] { shell.invoke_verb(fonts_folder, file, u"Install"); });
    const bool is_32_bit_program_on_64_bit_windows = program_folder.find(u"(x86)") != Text::npos;
    const Text registrar =
        program_folder +
        (is_32_bit_program_on_64_bit_windows ? u"\\FontReg64.exe" : u"\\FontReg32.exe");
    attempt([&] { shell.run_and_wait(registrar, true); });
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
