// Draws a list of symbols as a host's printer would: text in the bar code fonts on a GDI bitmap, QR
// symbols as the metafiles that the classes paint, and turned EAN-13 through the DLL's class, kind
// "TURNED". draw_symbols LIST, a line for each: kind, dots per inch, size step, text in hexadecimal
// UTF-8, file; tabs between them.

#include <cmath>
#include <cstdio>
#include <fstream>
#include <sstream>

#include "barcode/qr_generator.h"
#include "barcode/symbology.h"
#include "com/guid.h"
#include "ports/windows/adapters.h"
#include "ports/windows/com_pictures.h"
#include "ports/windows/gdi_drawing.h"
#include "tests/com/picture_box.h"
#include "windows/bstr.h"
#include "windows/failure.h"

namespace {

using namespace tavrix;

struct Order {
    base::Text kind;
    int dots_per_inch;
    int size_step;
    base::Text text;
    std::string file;
};

void save(HBITMAP picture, const std::string& path) {
    const ports::Bitmap bitmap = windows::read_bitmap(picture);
    std::ofstream file(path, std::ios::binary);
    // Black on white: one byte of each pixel tells its grey.
    file << "P5\n" << bitmap.width_px << ' ' << bitmap.height_px << "\n255\n";
    for (std::size_t i = 0; i < bitmap.bits.size(); i += 4) {
        file.put(static_cast<char>(bitmap.bits[i]));
    }
}

// The size at which a module is the whole number of pixels next to its size at the smallest text.
constexpr double smallest_module_inches = 15.0 / 1440;

int module_px(int dots_per_inch) {
    return static_cast<int>(std::lround(smallest_module_inches * dots_per_inch));
}

void draw_linear(const Order& order) {
    const barcode::Symbology* symbology = barcode::find_symbology(order.kind);
    const base::Text symbol = symbology->encode(order.text).symbol;
    const fonts::Font& font = symbology->font->glyphs();
    const double em_px = font.units_per_em / 32.0 * module_px(order.dots_per_inch);
    const double margin = 12.0 * module_px(order.dots_per_inch) * 1440 / order.dots_per_inch;
    test::PictureBox page(1, 1, order.dots_per_inch);
    page.font_name = font.family;
    page.font_size = em_px * 72 / order.dots_per_inch;
    const double width = page.text_width(symbol) + 2 * margin;
    const double height = page.text_height(symbol) + 2 * margin;
    page.set_width(width);
    page.set_height(height);
    page.default_scale();
    page.x = page.y = margin;
    page.write_text(symbol);
    save(page.bitmap.get(), order.file);
}

void draw_qr(const Order& order) {
    barcode::drk_wyd_QRGen generator;
    generator.set_xEcl(1);
    generator.set_xSquare(true);
    generator.set_xBoostEcl(true);
    generator.set_xModuleSize(120);
    const auto drawing = generator.QRCodegenBarcode(order.text);
    const int side_px = drawing->width_twips() / 120 * 2 * module_px(order.dots_per_inch);
    const auto picture = ports::make_windows_pictures()->from_drawing(*drawing);
    test::PictureBox page(side_px, side_px, order.dots_per_inch);
    page.paint_picture(dynamic_cast<windows::ComPicture&>(*picture).dispatch(), 0, 0, page.width(),
                       page.height());
    save(page.bitmap.get(), order.file);
}

// The class out of the DLL beside this program, registered or not.
test::ComPointer<IDispatch> make_dispatcher() {
    static const test::LoadedDll dll(u"Tavrix.dll");
    constexpr CLSID class_id = com::guid("D1320870-9CBC-441C-A42D-1436BFA331C2");
    test::ComPointer<IClassFactory> factory;
    test::ComPointer<IDispatch> object;
    windows::check(dll.function<HRESULT STDAPICALLTYPE(REFCLSID, REFIID, void**)>(
                       "DllGetClassObject")(class_id, IID_IClassFactory, factory.out_void()),
                   u"DllGetClassObject");
    windows::check(factory->CreateInstance(nullptr, IID_IDispatch, object.out_void()),
                   u"CreateInstance");
    return object;
}

// In the rectangle that the symbol has at the step's font size, which is hardly ever a whole number
// of dots for each module.
void draw_turned(const Order& order) {
    static const test::ComPointer<IDispatch> dispatcher = make_dispatcher();
    const fonts::Font& font = fonts::ean13_font();
    constexpr int length_modules = 11 + 95 + 7;
    constexpr int margin_modules = 12;
    const int height_modules = (font.ascent + font.descent) / fonts::module_units;
    const double module_twips = (48 + 10 * order.size_step) * 20.0 / 64;
    const auto twips = [&](int modules) {
        return static_cast<std::int32_t>(std::lround(modules * module_twips));
    };
    const auto pixels = [&](int modules) {
        return static_cast<std::int32_t>(
            std::ceil(modules * module_twips * order.dots_per_inch / 1440));
    };
    const test::HostedBox box(test::HostKind::vb6, pixels(height_modules + 2 * margin_modules),
                              pixels(length_modules + 2 * margin_modules), order.dots_per_inch);
    const test::Outcome outcome =
        test::call(dispatcher, u"RysujEAN",
                   {box.object, order.text, twips(margin_modules), twips(margin_modules),
                    twips(height_modules), twips(length_modules), order.size_step, u"EAN13", false,
                    true, u"C:\\none", u"C:\\windows"});
    windows::check(outcome.code, u"RysujEAN");
    save(box.box->bitmap.get(), order.file);
}

base::Text from_hexadecimal(const std::string& digits) {
    std::string bytes;
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2) {
        bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
    }
    return base::from_utf8(bytes);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    if (!test::load_fonts()) return 1;
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    std::ifstream list(argv[1]);
    for (std::string line; std::getline(list, line);) {
        std::istringstream fields(line);
        std::string kind, text;
        Order order{};
        fields >> kind >> order.dots_per_inch >> order.size_step >> text >> order.file;
        order.kind = base::from_utf8(kind);
        order.text = from_hexadecimal(text);
        (order.kind == u"QR"       ? draw_qr
         : order.kind == u"TURNED" ? draw_turned
                                   : draw_linear)(order);
    }
    return 0;
}
