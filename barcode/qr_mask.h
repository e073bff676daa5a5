#pragma once

#include <qrcodegen/qrcodegen.hpp>

namespace tavrix::barcode {

/// The mask pattern, 0 to 7, that the generator's automatic choice takes for the data of `symbol`:
/// the one of the least penalty (ISO/IEC 18004: 2015, 7.8.3), the first of equal ones. Any mask of
/// the same data and version will do as `symbol`. Choosing takes a fraction of drawing a symbol,
/// because modules are judged a machine word at a time.
int choose_qr_mask(const qrcodegen::QrCode& symbol);

}  // namespace tavrix::barcode
