#pragma once

#include <string_view>

#include "base/text.h"

namespace tavrix::mail::mime {

/// How a body is written down (RFC 2045, section 6).
enum class TransferEncoding { identity, base64, quoted_printable, uuencode };

/// The encoding of a Content-Transfer-Encoding; anything unknown stands as it is.
TransferEncoding transfer_encoding(std::string_view name) noexcept;

/// The bytes of `body`. Decodes what can be decoded: in Base64 whatever is no letter is left out,
/// padding may be missing and several padded texts may stand one behind the other, but a line
/// behind padding that is no Base64 ends it; in quoted-printable a "=" that no code follows stands
/// for itself; uuencode that never begins stays as it is.
base::Bytes decode_body(TransferEncoding encoding, std::string_view body);

}  // namespace tavrix::mail::mime
