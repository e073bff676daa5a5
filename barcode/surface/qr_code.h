#pragma once

#include "barcode/qr_generator.h"
#include "ports/surface.h"

namespace tavrix::barcode {

/// Where a picture is painted, in the surface's scale units.
struct PlacementRectangle {
    double x;
    double y;
    double width;
    double height;
};

/// Everything that a host may say about a QR symbol.
struct QrRequest {
    base::Text text;
    bool boost_level;
    base::Text colour;
    std::int32_t level;
    std::int32_t mask;
    std::int32_t min_version;
    std::int32_t max_version;
    std::int32_t module_twips;
    bool square;
};

/// QR symbols on a host's surface.
class Drk_wyd_QRcode {
  public:
    /// `version_reader` is told "QR Code Version n" of each symbol made.
    Drk_wyd_QRcode(ports::Pictures& pictures, drk_wyd_QRGen::VersionReader version_reader)
        : pictures_(pictures), generator_(std::move(version_reader)) {}

    static base::Bytes Utf8BytesFromString(base::TextView text);

    /// Null when there is no symbol. An unknown colour is black; a level other than 0 to 3 and a
    /// mask other than -1 to 7 leave what was there before.
    std::unique_ptr<ports::Picture> picture(const QrRequest& request);

    /// Paints the symbol into `placement` and, turned, the text beside it; position and font stay.
    /// Throws the overflow error for a huge `Rozm`, an error when there is no symbol, and what the
    /// surface throws.
    void RysujEAN(ports::Surface& pict, base::TextView text, const PlacementRectangle& placement,
                  std::int32_t Rozm, bool bn, bool rotate);

  private:
    ports::Pictures& pictures_;
    drk_wyd_QRGen generator_;
};

}  // namespace tavrix::barcode
