#pragma once

#include <span>
#include <string>

#include "mail/outgoing/mailbox.h"

namespace tavrix::mail::outgoing {

/// The encoded words (RFC 2047) of `text`, at most 75 characters each and with whole letters, one
/// below the other so that no line is longer than 76; `column` is what stands before the first.
std::string encoded_words(base::TextView text, std::size_t column);

/// A whole field, CR LF included. A text in ASCII stands on one line, because there are readers
/// that lose what is folded; any other becomes encoded words. Control characters, line ends above
/// all, become blanks, one for each run.
std::string text_field(std::string_view name, base::TextView text);

/// The same for addresses; "undisclosed-recipients:;" for none.
std::string address_field(std::string_view name, std::span<const Mailbox> mailboxes);

/// For fields that hold whatever the host says: an address where it is one, else a text. The empty
/// text for nothing.
std::string address_or_text_field(std::string_view name, base::TextView value);

}  // namespace tavrix::mail::outgoing
