#pragma once

#include <string>

#include "base/text.h"

namespace tavrix::mail::outgoing {

/// What a sender wants to be told about his message's way.
struct Notification {
    /// For servers (RFC 3461, section 4.1): "NEVER", or a list of the others. Empty for their
    /// habit.
    std::string notify;
    /// For the reader's program: whom to tell that the message was read. Empty for nobody.
    base::Text receipt_to;
};

/// Reads the words NEVER, SUCCESS, FAILURE and DELAY between whatever separates them; the sum of
/// their numbers, which hosts know from CDO (1, 2, 4 and 8); or an address. Anything else asks for
/// nothing: a message matters more than its receipt.
Notification read_notification(base::TextView options);

}  // namespace tavrix::mail::outgoing
