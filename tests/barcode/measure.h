#pragma once

#include <string>

#include "drawing/coverage.h"

namespace tavrix::test {

/// What a verifier measures on one scan line across a picture, without forgiving anything: decoders
/// read symbols that no standard allows.
struct ScanLine {
    /// Widths of bars and spaces in modules, beginning with the first bar; empty when a run is not
    /// a whole number of modules wide.
    std::string runs;
    double left_quiet_modules = 0;
    double right_quiet_modules = 0;
};

/// Measures the pixel row `y_px`, where a module is `module_px` wide.
ScanLine measure(const drawing::Coverage& picture, std::int32_t y_px, std::int32_t module_px);

/// How many pixels the column `x_px` is dark from its first dark pixel on.
std::int32_t bar_height_px(const drawing::Coverage& picture, std::int32_t x_px);

// The text that the runs stand for, read by the standards' tables as written in the test, or what
// is wrong with them in parentheses.
std::string read_ean(const ScanLine& line);
std::string read_code128(const ScanLine& line);
std::string read_code39(const ScanLine& line);

}  // namespace tavrix::test
