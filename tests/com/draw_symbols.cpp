// Draws a list of symbols as a host's printer would: text in the bar code fonts on a GDI bitmap,
// and QR symbols as the metafiles that the classes paint. draw_symbols LIST, a line for each: kind,
// dots per inch, text in hexadecimal UTF-8, file; tabs between them.

#include <cmath>
#include <cstdio>
#include <fstream>
#include <sstream>

#include "barcode/qr_generator.h"
#include "barcode/symbology.h"
#include "ports/windows/adapters.h"
#include "ports/windows/com_pictures.h"
#include "ports/windows/gdi_drawing.h"
#include "windows/bstr.h"
#include "windows/failure.h"

// clang-format off
#include <ocidl.h>
// clang-format on

namespace {

using namespace tavrix;

struct Order {
    base::Text kind;
    int dots_per_inch;
    base::Text text;
    std::string file;
};

/// A white bitmap of 32 bits and the device that draws on it.
class Page {
  public:
    Page(int width_px, int height_px)
        : device_(CreateCompatibleDC(nullptr)),
          bitmap_(CreateBitmap(width_px, height_px, 1, 32, nullptr)) {
        SelectObject(device_.get(), bitmap_.get());
        const RECT whole = {0, 0, width_px, height_px};
        FillRect(device_.get(), &whole, static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH)));
    }
    HDC device() const { return device_.get(); }

    void save(const std::string& path) const {
        const ports::Bitmap bitmap = windows::read_bitmap(bitmap_.get());
        std::ofstream file(path, std::ios::binary);
        // Black on white: one byte of each pixel tells its grey.
        file << "P5\n" << bitmap.width_px << ' ' << bitmap.height_px << "\n255\n";
        for (std::size_t i = 0; i < bitmap.bits.size(); i += 4) {
            file.put(static_cast<char>(bitmap.bits[i]));
        }
    }

  private:
    windows::MemoryDevice device_;
    windows::GdiBitmap bitmap_;
};

// The size at which a module is the whole number of pixels next to its size at the smallest text.
constexpr double smallest_module_inches = 15.0 / 1440;

int module_px(int dots_per_inch) {
    return static_cast<int>(std::lround(smallest_module_inches * dots_per_inch));
}

void draw_linear(const Order& order) {
    const barcode::Symbology* symbology = barcode::find_symbology(order.kind);
    const base::Text symbol = symbology->encode(order.text).symbol;
    const fonts::Font& font = symbology->font->glyphs();
    const windows::MemoryDevice screen(CreateCompatibleDC(nullptr));
    constexpr double points_per_inch = 72;
    const double em_px = font.units_per_em / 32.0 * module_px(order.dots_per_inch);
    const windows::GdiFont gdi_font = windows::make_font(
        screen.get(), font.family,
        em_px * points_per_inch / GetDeviceCaps(screen.get(), LOGPIXELSY), false, 0);
    const auto* wide = windows::wide(symbol);
    const int length = static_cast<int>(symbol.size());
    SIZE size{};
    {
        const windows::Selected selected(screen.get(), gdi_font.get());
        GetTextExtentPoint32W(screen.get(), wide, length, &size);
    }
    const int margin_px = 12 * module_px(order.dots_per_inch);
    const Page page(size.cx + 2 * margin_px, size.cy + 2 * margin_px);
    const windows::Selected selected(page.device(), gdi_font.get());
    TextOutW(page.device(), margin_px, margin_px, wide, length);
    page.save(order.file);
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
    const auto ole = dynamic_cast<windows::ComPicture&>(*picture).dispatch().query<IPicture>();
    OLE_HANDLE handle = 0;
    windows::check(ole->get_Handle(&handle), u"Handle");
    const Page page(side_px, side_px);
    const RECT place = {0, 0, side_px, side_px};
    const auto number = static_cast<INT_PTR>(static_cast<INT>(handle));
    PlayEnhMetaFile(page.device(), reinterpret_cast<HENHMETAFILE>(number), &place);
    page.save(order.file);
}

base::Text from_hexadecimal(const std::string& digits) {
    std::string bytes;
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2) {
        bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
    }
    return base::from_utf8(bytes);
}

void add_fonts(const std::string& program) {
    const std::string folder = program.substr(0, program.find_last_of("\\/") + 1) + "fonts\\";
    for (const char* file : {"ean13", "code128", "free3of9", "fre3of9x"}) {
        const std::string path = folder + file + ".ttf";
        if (AddFontResourceExA(path.c_str(), FR_PRIVATE, nullptr) == 0) {
            std::fprintf(stderr, "no font %s\n", path.c_str());
            std::exit(1);
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    char program[MAX_PATH] = {};
    GetModuleFileNameA(nullptr, program, MAX_PATH);
    add_fonts(program);
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    std::ifstream list(argv[1]);
    for (std::string line; std::getline(list, line);) {
        std::istringstream fields(line);
        std::string kind, text, file;
        int dots_per_inch = 0;
        fields >> kind >> dots_per_inch >> text >> file;
        const Order order{base::from_utf8(kind), dots_per_inch, from_hexadecimal(text), file};
        order.kind == u"QR" ? draw_qr(order) : draw_linear(order);
    }
    return 0;
}
