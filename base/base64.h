#pragma once

#include <optional>

#include "base/text.h"

namespace tavrix::base {

/// RFC 4648, section 4, padded, without line breaks.
std::string base64_encode(ByteView bytes);

/// Strict but for white space (space, tab, CR, LF), which is skipped wherever it stands: padding
/// must be there and the bits behind the last byte must be zero. Nothing when `text` is not Base64.
std::optional<Bytes> base64_decode(std::string_view text);

}  // namespace tavrix::base
