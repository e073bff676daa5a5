#pragma once

#include <array>

#include "fonts/font.h"

namespace tavrix::fonts {

// A font's module is a whole number of its units, so bars never depend on rounding. At the smallest
// size that the classes print in (48 points, 42 for Code 128) a module is 0.75 points, 0.2646 mm:
// one pixel of a screen with 96 dots per inch, and the smallest that GS1 allows.

inline constexpr std::int32_t module_units = 32;

/// Quiet zones in modules.
inline constexpr std::int32_t ean13_left_quiet_modules = 11;
inline constexpr std::int32_t ean_quiet_modules = 7;
inline constexpr std::int32_t linear_quiet_modules = 10;

/// "code ean13": digits as the encoders write them, guards five modules longer than the digits'
/// bars, the human-readable digits, the quiet zones.
const Font& ean13_font();
/// "CODE 128": start and stop characters bring the quiet zones along.
const Font& code128_font();
/// "free 3 of 9": wide runs of three modules; the quiet zones are the page's affair, as one
/// character is both start and stop.
const Font& code39_font();
/// "Free 3 of 9 Extended": every ASCII character as its one or two characters of Code 39, except
/// "*", which stays start and stop.
const Font& code39_extended_font();

/// A bar code font by its names; the glyphs are made when they are first asked for.
struct BarcodeFont {
    base::TextView family;
    /// Name of the font file without folder and extension.
    base::TextView file;
    const Font& (*glyphs)();
};
inline constexpr BarcodeFont ean13 = {u"code ean13", u"ean13", &ean13_font};
inline constexpr BarcodeFont code128 = {u"CODE 128", u"code128", &code128_font};
inline constexpr BarcodeFont code39 = {u"free 3 of 9", u"free3of9", &code39_font};
inline constexpr BarcodeFont code39_extended = {u"Free 3 of 9 Extended", u"fre3of9x",
                                                &code39_extended_font};
inline constexpr std::array<const BarcodeFont*, 4> barcode_fonts = {&ean13, &code128, &code39,
                                                                    &code39_extended};

/// The em nearest to `em_px` at which a module of a bar code font is a whole number of pixels: bars
/// of uneven width cannot be read.
double readable_em_px(const Font& font, double em_px) noexcept;

/// The font of that family in any letter case; null for another.
const Font* find_barcode_font(base::TextView family) noexcept;

}  // namespace tavrix::fonts
