#pragma once

#include <cstdint>

#include "base/text.h"

namespace tavrix::barcode {

// EAN-8, EAN-13 and their add-ons as text for the font "code ean13": every guard and every digit
// with its bars is one character of that font. GS1 General Specifications, 5.2.

/// `digits`: the 7 digits without the check digit, which is computed and appended. 11 characters;
/// empty for any other length and for anything that is not a digit.
base::Text encode_ean8(base::TextView digits);

/// `digits`: the 12 digits without the check digit, which is computed and appended. 15 characters;
/// empty for any other length and for anything that is not a digit.
base::Text encode_ean13(base::TextView digits);

/// `digits`: 2 or 5 of them; there is no check digit, it goes into the parities. 4 or 10
/// characters; empty for any other length and for anything that is not a digit.
base::Text encode_add_on(base::TextView digits);

/// The digit that makes a GS1 number of `digits` complete: weights 3 and 1 from the right
/// (GS1 General Specifications, 7.9). The caller has made sure that they are digits.
char16_t gs1_check_digit(base::TextView digits) noexcept;

/// True when `text` holds nothing but "0" to "9"; also for the empty text.
bool all_digits(base::TextView text) noexcept;

/// Eight characters "0" or "1", the most significant bit first.
base::Text binary_byte(std::uint8_t value);

}  // namespace tavrix::barcode
