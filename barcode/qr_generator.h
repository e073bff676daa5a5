#pragma once

#include <functional>
#include <optional>

#include "base/text.h"
#include "drawing/drawing.h"

namespace tavrix::barcode {

/// White modules on each side of a symbol (ISO/IEC 18004: 2015, 5.3.8).
inline constexpr std::int32_t qr_quiet_zone_modules = 4;

/// The seven colour names in any letter case; black for every other text.
drawing::Colour qr_colour(base::TextView name) noexcept;
bool is_qr_colour(base::TextView name) noexcept;

/// Turns a text into a QR symbol and the symbol into a drawing. Options are kept as given and
/// looked at when a symbol is made.
class drk_wyd_QRGen {
  public:
    using VersionReader = std::function<void(base::TextView)>;

    /// `version_reader` is told "QR Code Version n" of each symbol made.
    explicit drk_wyd_QRGen(VersionReader version_reader = {})
        : version_reader_(std::move(version_reader)) {}

    void set_xEcl(std::int32_t level) noexcept { level_ = level; }
    void set_xMinVersion(std::int32_t version) noexcept { min_version_ = version; }
    void set_xMaxVersion(std::int32_t version) noexcept { max_version_ = version; }
    void set_xMask(std::int32_t mask) noexcept { mask_ = mask; }
    void set_xBoostEcl(bool boost) noexcept { boost_level_ = boost; }
    void set_xSquare(bool square) noexcept { square_ = square; }
    void set_xModuleSize(std::int32_t size_twips) noexcept { module_twips_ = size_twips; }
    void set_xColor(base::TextView name) noexcept { colour_ = qr_colour(name); }

    /// The symbol of `text` in UTF-8, in byte mode, with its quiet zone. Nothing for the empty
    /// text, for one that does not fit and for options outside their ranges. Throws the overflow
    /// error when the picture is wider than 32-bit twips.
    std::optional<drawing::Drawing> QRCodegenBarcode(base::TextView text) const;

    /// The bytes of `text` in UTF-8.
    static base::Bytes StrToUtf8(base::TextView text);

  private:
    std::int32_t level_ = 0;
    std::int32_t min_version_ = 1;
    std::int32_t max_version_ = 40;
    std::int32_t mask_ = -1;
    bool boost_level_ = false;
    bool square_ = false;
    std::int32_t module_twips_ = 0;
    drawing::Colour colour_ = 0;
    VersionReader version_reader_;
};

}  // namespace tavrix::barcode
