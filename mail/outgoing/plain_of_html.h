#pragma once

#include "base/text.h"

namespace tavrix::mail::outgoing {

/// What somebody reads of `html` whose program shows none: its text, with line ends where blocks
/// and rows end.
base::Text plain_of_html(base::TextView html);

}  // namespace tavrix::mail::outgoing
