#include "barcode/qr_generator.h"

#include <algorithm>
#include <array>
#include <limits>
#include <qrcodegen/qrcodegen.hpp>
#include <utility>
#include <vector>

#include "barcode/qr_mask.h"
#include "base/error.h"

namespace tavrix::barcode {
namespace {

using qrcodegen::QrCode;
using qrcodegen::QrSegment;

struct NamedColour {
    base::TextView name;
    drawing::Colour value;
};

constexpr std::array<NamedColour, 7> colours = {{
    {u"black", 0x000000},
    {u"red", 0x0000FF},
    {u"green", 0x00FF00},
    {u"yellow", 0x00FFFF},
    {u"blue", 0xFF0000},
    {u"magenta", 0xFF00FF},
    {u"cyan", 0xFFFF00},
}};

// The byte mode's capacity of version 40 at level low (ISO/IEC 18004, table 7): anything longer is
// refused before the library spends time and memory on its bits.
constexpr std::size_t largest_text_bytes = 2953;

constexpr int automatic_mask = -1;

constexpr std::array<QrCode::Ecc, 4> levels = {QrCode::Ecc::LOW, QrCode::Ecc::MEDIUM,
                                               QrCode::Ecc::QUARTILE, QrCode::Ecc::HIGH};

bool is_between(std::int32_t value, std::int32_t low, std::int32_t high) noexcept {
    return value >= low && value <= high;
}

/// Draws modules of one size at their places.
class ModulePainter {
  public:
    ModulePainter(drawing::Drawing& drawing, std::int32_t module_twips, bool square) noexcept
        : drawing_(drawing), size_(module_twips), square_(square) {}

    void paint(std::int32_t column, std::int32_t row) {
        const std::int32_t left = (column + qr_quiet_zone_modules) * size_;
        const std::int32_t top = (row + qr_quiet_zone_modules) * size_;
        if (square_) {
            drawing_.add_rectangle(left, top, left + size_, top + size_);
            return;
        }
        // A diamond that touches the middles of the square's sides.
        const std::int32_t half = size_ / 2;
        drawing_.add({{left + half, top},
                      {left + size_, top + half},
                      {left + half, top + size_},
                      {left, top + half}});
    }

  private:
    drawing::Drawing& drawing_;
    std::int32_t size_;
    bool square_;
};

drawing::Drawing draw(const QrCode& symbol, std::int32_t module_twips, bool square,
                      drawing::Colour colour) {
    const std::int32_t modules = symbol.getSize();
    const std::int64_t side =
        std::int64_t{modules + 2 * qr_quiet_zone_modules} * std::max(module_twips, 0);
    if (side > std::numeric_limits<std::int32_t>::max()) {
        throw base::AutomationError(base::ErrorNumber::overflow, u"Tavrix", u"Overflow");
    }
    const auto side_twips = static_cast<std::int32_t>(side);
    drawing::Drawing drawing(side_twips, side_twips, colour);
    // About half of the modules are dark: that is what the mask is chosen for.
    drawing.reserve(static_cast<std::size_t>(modules * modules) * 9 / 16);
    ModulePainter painter(drawing, std::max(module_twips, 0), square);
    for (std::int32_t row = 0; row < modules; ++row) {
        for (std::int32_t column = 0; column < modules; ++column) {
            if (symbol.getModule(column, row)) painter.paint(column, row);
        }
        drawing.end_row();
    }
    return drawing;
}

/// A mask of -1 is chosen here: the library would draw the symbol eight times and judge it module
/// by module, which takes ten times as long and ends with the same mask.
std::optional<QrCode> encode(const base::Bytes& bytes, QrCode::Ecc level, int min_version,
                             int max_version, int mask, bool boost_level) {
    const std::vector<QrSegment> segments = {QrSegment::makeBytes(bytes)};
    const auto masked = [&](int number) {
        return QrCode::encodeSegments(segments, level, min_version, max_version, number,
                                      boost_level);
    };
    try {
        if (mask != automatic_mask) return masked(mask);
        QrCode symbol = masked(0);
        const int chosen = choose_qr_mask(symbol);
        return chosen == 0 ? std::move(symbol) : masked(chosen);
    } catch (const qrcodegen::data_too_long&) {
        return std::nullopt;
    }
}

const NamedColour* find_colour(base::TextView name) noexcept {
    const auto* found = std::find_if(
        colours.begin(), colours.end(),
        [&](const NamedColour& colour) { return base::equal_case_blind(colour.name, name); });
    return found == colours.end() ? nullptr : found;
}

}  // namespace

drawing::Colour qr_colour(base::TextView name) noexcept {
    const NamedColour* colour = find_colour(name);
    return colour == nullptr ? 0 : colour->value;
}

bool is_qr_colour(base::TextView name) noexcept {
    return find_colour(name) != nullptr;
}

base::Bytes drk_wyd_QRGen::StrToUtf8(base::TextView text) {
    const std::string utf8 = base::to_utf8(text);
    return {utf8.begin(), utf8.end()};
}

std::optional<drawing::Drawing> drk_wyd_QRGen::QRCodegenBarcode(base::TextView text) const {
    // No text has fewer bytes than characters.
    if (text.empty() || text.size() > largest_text_bytes) return std::nullopt;
    const base::Bytes bytes = StrToUtf8(text);
    if (bytes.size() > largest_text_bytes) return std::nullopt;
    if (!is_between(level_, 0, 3) || !is_between(mask_, automatic_mask, 7) ||
        !is_between(min_version_, QrCode::MIN_VERSION, max_version_) ||
        !is_between(max_version_, min_version_, QrCode::MAX_VERSION)) {
        return std::nullopt;
    }
    const std::optional<QrCode> symbol = encode(bytes, levels[static_cast<std::size_t>(level_)],
                                                min_version_, max_version_, mask_, boost_level_);
    if (!symbol) return std::nullopt;
    if (version_reader_) {
        version_reader_(u"QR Code Version " + base::to_decimal(symbol->getVersion()));
    }
    return draw(*symbol, module_twips_, square_, colour_);
}

}  // namespace tavrix::barcode
