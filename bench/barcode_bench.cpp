// Symbols per second against zint's library on the same texts in the same run, and the turning of
// pictures.

#include <zint.h>

#include <chrono>
#include <cstdio>
#include <qrcodegen/qrcodegen.hpp>
#include <random>

#include "barcode/code128.h"
#include "barcode/ean.h"
#include "barcode/qr_generator.h"
#include "barcode/surface/rotation.h"
#include "barcode/symbol_drawing.h"
#include "ports/native/canvas.h"

namespace {

using namespace tavrix;
using Clock = std::chrono::steady_clock;

double seconds_since(Clock::time_point begin) {
    return std::chrono::duration<double>(Clock::now() - begin).count();
}

/// How many texts a second `work` gets through, repeating them for half a second.
template <typename Texts, typename Work>
double rate(const Texts& texts, Work&& work) {
    constexpr double wanted_seconds = 0.5;
    std::size_t done = 0;
    const auto begin = Clock::now();
    do {
        for (const auto& text : texts) work(text);
        done += texts.size();
    } while (seconds_since(begin) < wanted_seconds);
    return static_cast<double>(done) / seconds_since(begin);
}

struct Zint {
    zint_symbol* symbol = ZBarcode_Create();
    ~Zint() { ZBarcode_Delete(symbol); }
};

template <typename Encode>
double zint_rate(const std::vector<std::string>& texts, int symbology, Encode&& encode) {
    Zint zint;
    return rate(texts, [&](const std::string& text) {
        ZBarcode_Clear(zint.symbol);
        zint.symbol->symbology = symbology;
        zint.symbol->option_1 = symbology == BARCODE_QRCODE ? 2 : -1;
        encode(zint.symbol, reinterpret_cast<const unsigned char*>(text.data()),
               static_cast<int>(text.size()));
    });
}

void report(const char* what, double ours, double theirs) {
    std::printf("%-28s %10.0f/s   zint %10.0f/s   ratio %.2f\n", what, ours, theirs, ours / theirs);
}

std::vector<std::string> random_texts(std::size_t length, const std::string& characters) {
    std::mt19937 random(1);
    std::vector<std::string> texts(200);
    for (std::string& text : texts) {
        while (text.size() < length) text += characters[random() % characters.size()];
    }
    return texts;
}

std::vector<base::Text> wide(const std::vector<std::string>& texts) {
    std::vector<base::Text> result;
    for (const std::string& text : texts) result.push_back(base::from_utf8(text));
    return result;
}

std::size_t sink = 0;

void compare_linear(const char* name, const char16_t* kind, int symbology,
                    const std::vector<std::string>& texts, auto&& encode) {
    const auto own_texts = wide(texts);
    const auto zint_encode = [](zint_symbol* symbol, const unsigned char* text, int length) {
        sink += static_cast<std::size_t>(ZBarcode_Encode(symbol, text, length));
    };
    const auto zint_vector = [](zint_symbol* symbol, const unsigned char* text, int length) {
        sink +=
            static_cast<std::size_t>(ZBarcode_Encode_and_Buffer_Vector(symbol, text, length, 0));
    };
    report((std::string(name) + ", encode").c_str(),
           rate(own_texts, [&](const base::Text& text) { sink += encode(text); }),
           zint_rate(texts, symbology, zint_encode));
    const barcode::Symbology& row = *barcode::find_symbology(kind);
    constexpr std::int32_t module_twips = 15;
    const drawing::TextSvg writer(row.font->glyphs(), barcode::em_twips(row, module_twips), 0);
    const auto to_svg = [&](const base::Text& text) {
        const base::Text symbol = row.encode(text).symbol;
        sink += writer.write(symbol, barcode::symbol_frame(row, symbol, module_twips)).size();
    };
    report((std::string(name) + ", encode to SVG").c_str(), rate(own_texts, to_svg),
           zint_rate(texts, symbology, zint_vector));
}

void compare_qr() {
    const auto texts =
        random_texts(100, "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ:/?-");
    const auto own_texts = wide(texts);
    barcode::drk_wyd_QRGen generator;
    generator.set_xEcl(1);
    generator.set_xSquare(true);
    generator.set_xModuleSize(120);
    const double drawn = rate(own_texts, [&](const base::Text& text) {
        sink += generator.QRCodegenBarcode(text)->sizes().size();
    });
    const double library = rate(texts, [&](const std::string& text) {
        const auto symbol = qrcodegen::QrCode::encodeSegments(
            {qrcodegen::QrSegment::makeBytes({text.begin(), text.end()})},
            qrcodegen::QrCode::Ecc::MEDIUM, 1, 40, -1, false);
        sink += static_cast<std::size_t>(symbol.getSize());
    });
    const double theirs = zint_rate(
        texts, BARCODE_QRCODE, [](zint_symbol* symbol, const unsigned char* text, int length) {
            sink += static_cast<std::size_t>(ZBarcode_Encode(symbol, text, length));
        });
    report("QR 100 bytes level M, drawn", drawn, theirs);
    std::printf("%-28s %10.0f/s   ours, drawn, %.2f times as fast\n", "QR, the library's own mask",
                library, drawn / library);
}

void turn_pictures() {
    ports::Canvas source(1000 * 15, 1000 * 15);
    ports::Canvas destination(1000 * 15, 1000 * 15);
    source.set_pixel(1, 1, 0);
    destination.set_pixel(1, 1, 0);
    const auto begin = Clock::now();
    barcode::turn_bitmap(source, destination, 90);
    std::printf("%-28s %10.1f ms\n", "RotatePicture 1000 x 1000", 1000 * seconds_since(begin));
    const auto copied = Clock::now();
    barcode::copy_quarter_turn(source, destination, 0, 0);
    std::printf("%-28s %10.1f ms\n", "RotateSurface2 1000 x 1000", 1000 * seconds_since(copied));
}

}  // namespace

int main() {
    compare_linear("EAN-13", u"EAN13", BARCODE_EANX, random_texts(12, "0123456789"),
                   [](const base::Text& text) { return barcode::encode_ean13(text).size(); });
    compare_linear("Code 128", u"EAN128", BARCODE_CODE128, random_texts(16, "0123456789ABCdef-"),
                   [](const base::Text& text) { return barcode::encode_code128(text).size(); });
    compare_qr();
    turn_pictures();
    return sink == 0 ? 1 : 0;
}
