#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <string_view>

#include "drawing/drawing.h"

namespace tavrix::cli {

struct PictureOptions {
    /// Its ending, ".svg" or ".png", says in which form; "-" is SVG on the standard output.
    std::string file;
    /// PNG only: pixels per inch. A module of `module_twips` gets the whole number of pixels that
    /// is nearest to its size and at least one, so that every module is as wide as the next.
    std::int32_t dots_per_inch = 300;
    std::int32_t module_twips = 15;
};

/// `--color`, one of the names that barcode::qr_colour knows.
void add_colour_option(CLI::App& command, std::string& colour, const std::string& help);

/// Throws CLI::ValidationError for another ending and for a file that cannot be written.
void write_picture(const drawing::Drawing& drawing, const PictureOptions& options);
/// A finished SVG into `file`, or to the standard output for "-".
void write_svg(std::string_view svg, const std::string& file);

}  // namespace tavrix::cli
