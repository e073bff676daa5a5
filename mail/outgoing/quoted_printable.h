#pragma once

#include <string>

#include "base/text.h"

namespace tavrix::mail::outgoing {

/// `text` as UTF-8 in quoted-printable (RFC 2045, section 6.7), every line of it ended by CR LF,
/// whatever ends it in `text`. What might be taken for something else at a line's beginning is
/// encoded too: "." ends a message on the wire, "From " begins one in old boxes, and lines of
/// hyphens stand between parts.
std::string quoted_printable(base::TextView text);

}  // namespace tavrix::mail::outgoing
