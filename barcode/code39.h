#pragma once

#include "base/text.h"

namespace tavrix::barcode {

/// `data` between the start and the stop character of Code 39 (ISO/IEC 16388: 2007), both "*" in
/// the fonts "free 3 of 9" and "Free 3 of 9 Extended". The data is taken as it is and no check
/// character is added.
inline base::Text wrap_code39(base::TextView data) {
    base::Text symbol;
    symbol.reserve(data.size() + 2);
    symbol += u'*';
    symbol += data;
    symbol += u'*';
    return symbol;
}

}  // namespace tavrix::barcode
