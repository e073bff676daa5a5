// Writes the font files into a folder: make_fonts FOLDER. Runs on the machine that builds, whatever
// it builds for.

#include <cstdio>
#include <fstream>

#include "fonts/barcode_fonts.h"
#include "fonts/true_type.h"

int main(int argc, char** argv) {
    using namespace tavrix;
    if (argc != 2) {
        std::fputs("make_fonts FOLDER\n", stderr);
        return 2;
    }
    for (const fonts::BarcodeFont* font : fonts::barcode_fonts) {
        const std::string path = std::string(argv[1]) + "/" + base::to_utf8(font->file) + ".ttf";
        const base::Bytes bytes = fonts::to_true_type(font->glyphs());
        std::ofstream file(path, std::ios::binary);
        file.write(reinterpret_cast<const char*>(bytes.data()),
                   static_cast<std::streamsize>(bytes.size()));
        file.close();
        if (!file) {
            std::fprintf(stderr, "cannot write %s\n", path.c_str());
            return 1;
        }
    }
    return 0;
}
