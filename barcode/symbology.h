#pragma once

#include <cstdint>
#include <span>

#include "base/text.h"
#include "fonts/barcode_fonts.h"

namespace tavrix::barcode {

enum class Kind : std::uint8_t { ean8, ean13, code128, code39, code39_extended, qr };

/// What a text becomes in a symbology: characters of its font, or why there is no symbol.
struct Encoded {
    base::Text symbol;
    /// In Polish; empty when there is a symbol.
    base::TextView refusal;
};

/// All that differs from one kind of symbol to the next, for the hosts' classes and for drawing
/// symbols so that they scan, whatever those classes do.
struct Symbology {
    Kind kind;
    /// The hosts' name of the kind.
    base::TextView name;
    base::TextView title;
    /// In Polish: the texts that have a symbol.
    base::TextView accepts;
    /// The class and the method that draw it on a host's surface.
    base::TextView method;
    /// Null for QR, as the next one: a symbol that is no line of text.
    const fonts::BarcodeFont* font;
    Encoded (*encode)(base::TextView text);
    /// Quiet zone on both sides that the font does not bring along.
    std::int32_t quiet_modules;
    /// The classes' sizes: of the bars at size step 0, and of the caption; 0 where the font has its
    /// own human-readable text.
    std::int32_t smallest_points;
    std::int32_t caption_points;

    bool needs_caption() const noexcept { return caption_points != 0; }
};

/// In the order of Kind. EAN digits may come with their check digit, which must be right, and with
/// an add-on behind a "+".
std::span<const Symbology> symbologies() noexcept;
const Symbology& symbology_of(Kind kind) noexcept;

/// Null for another name; names are told apart by letter case, as the hosts do.
const Symbology* find_symbology(base::TextView name) noexcept;

}  // namespace tavrix::barcode
