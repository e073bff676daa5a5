#pragma once

#include <string_view>

#include "ports/code_page.h"

namespace tavrix::mail::mime {

/// The text of `bytes` that say they are in `charset`, a name as messages have it, or empty. Mail
/// programs say what they like, so the bytes count for more:
///
/// - what is UTF-8 beyond ASCII is UTF-8, unless the named set is one of several bytes itself;
/// - bytes 80 to 9F, which ISO-8859-2 does not have, make it windows-1250;
/// - whatever names no set that has Polish letters (none, US-ASCII, ISO-8859-1, unknown ones) is
///   windows-1250, and so is damaged UTF-8 whose bytes make nothing but Polish letters there.
base::Text decode_text(std::string_view bytes, std::string_view charset,
                       const ports::CodePage& code_page);

}  // namespace tavrix::mail::mime
