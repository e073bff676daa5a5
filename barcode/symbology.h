#pragma once

#include <span>

#include "base/text.h"
#include "fonts/font.h"

namespace tavrix::barcode {

/// What a text becomes in a symbology: characters of its font, or why there is no symbol.
struct Encoded {
    base::Text symbol;
    /// In Polish; empty when there is a symbol.
    base::TextView refusal;
};

/// A linear symbology whose symbols are drawn so that they scan, whatever the hosts' classes do.
struct Symbology {
    /// The hosts' name of the kind.
    base::TextView kind;
    base::TextView help;
    const fonts::Font& (*font)();
    Encoded (*encode)(base::TextView text);
    /// Quiet zone on both sides that the font does not bring along.
    std::int32_t quiet_modules;
    /// True where the font has no human-readable text of its own.
    bool needs_caption;
};

/// EAN8, EAN13, EAN128, EAN39, EAN39EX. EAN digits may come with their check digit, which must be
/// right, and with an add-on behind a "+".
std::span<const Symbology> symbologies() noexcept;

/// Null for another kind; kinds are told apart by letter case, as the hosts do.
const Symbology* find_symbology(base::TextView kind) noexcept;

}  // namespace tavrix::barcode
