#pragma once

#include <string>

#include "base/text.h"

namespace tavrix::mail::outgoing {

/// The header of the part that holds a file of this name in Base64, with the empty line behind it.
/// A name beyond ASCII is given three times, for three kinds of readers: as encoded words, in plain
/// letters, and as RFC 2231 has it.
std::string attachment_header(base::TextView file_name);

}  // namespace tavrix::mail::outgoing
