#pragma once

#include <string_view>

#include "ports/code_page.h"

namespace tavrix::mail::mime {

/// The text of an unfolded header value: its encoded words (RFC 2047) decoded, wherever they stand,
/// in quoted strings too, because mail programs put them there. Neighbours in the same character
/// set and encoding are joined before they are decoded, because programs cut letters in two. What
/// is no encoded word stays as it is.
base::Text decode_words(std::string_view value, const ports::CodePage& code_page);

}  // namespace tavrix::mail::mime
