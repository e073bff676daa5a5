#pragma once

#include <string>
#include <vector>

#include "base/text.h"

namespace tavrix::mail::outgoing {

/// Somebody's address.
struct Mailbox {
    /// As people read it; empty for none.
    base::Text name;
    /// "local@domain" for the wire: the domain in ASCII, the local part UTF-8.
    std::string address;

    /// False when only a server that knows SMTPUTF8 (RFC 6531) can take it.
    bool is_ascii() const noexcept;
    /// What stands behind the "@"; empty for an address without one.
    std::string_view domain() const noexcept;
};

/// Reads "local@domain", "<local@domain>" or "Name <local@domain>", the name with or without
/// quotation marks. Throws base::AutomationError, which names the address, for anything else: above
/// all for a control character anywhere, which would begin a line of its own on the wire.
Mailbox parse_mailbox(base::TextView text);

/// The mailboxes between `separators`; what is empty or blank between two of them is left out.
/// What stands between quotation marks separates nothing.
std::vector<Mailbox> parse_mailboxes(base::TextView list, base::TextView separators);

}  // namespace tavrix::mail::outgoing
