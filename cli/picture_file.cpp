#include "cli/picture_file.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iostream>

#include "barcode/qr_generator.h"
#include "base/path.h"
#include "drawing/png.h"
#include "drawing/svg.h"

namespace tavrix::cli {
namespace {

constexpr double twips_per_inch = 1440;

base::Bytes png_of(const drawing::Drawing& drawing, const PictureOptions& options) {
    const double module_px =
        std::max(1.0, std::round(options.module_twips * options.dots_per_inch / twips_per_inch));
    const double pixels_per_twip = module_px / options.module_twips;
    return drawing::to_png(drawing::rasterise(drawing, pixels_per_twip), drawing.colour(),
                           pixels_per_twip * twips_per_inch);
}

void write_file(const std::string& path, std::string_view content) {
    std::ofstream file(base::path_of(path), std::ios::binary);
    file.write(content.data(), static_cast<std::streamsize>(content.size()));
    file.close();
    if (!file) throw CLI::ValidationError(path, "nie można zapisać pliku");
}

}  // namespace

void add_colour_option(CLI::App& command, std::string& colour, const std::string& help) {
    command
        .add_option("--color", colour, help + ": black, red, green, yellow, blue, magenta, cyan")
        ->check(CLI::Validator(
            [](const std::string& name) {
                return barcode::is_qr_colour(base::from_utf8(name)) ? std::string()
                                                                    : "nie ma koloru " + name;
            },
            "KOLOR"))
        ->capture_default_str();
}

void write_svg(std::string_view svg, const std::string& file) {
    if (file == "-") {
        std::cout << svg;
    } else {
        write_file(file, svg);
    }
}

void write_picture(const drawing::Drawing& drawing, const PictureOptions& options) {
    if (options.file == "-" || options.file.ends_with(".svg")) {
        write_svg(drawing::to_svg(drawing), options.file);
    } else if (options.file.ends_with(".png")) {
        write_file(options.file, base::chars_of(png_of(drawing, options)));
    } else {
        throw CLI::ValidationError(options.file, "plik wynikowy kończy się na .svg albo .png");
    }
}

}  // namespace tavrix::cli
