#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "mail/mime/header.h"
#include "mail/mime/transfer_encoding.h"
#include "ports/code_page.h"

namespace tavrix::mail::mime {

/// A part that holds no other parts. Views into the message.
struct Part {
    /// Still encoded.
    std::string_view body;
    TransferEncoding encoding = TransferEncoding::identity;
    /// In lower case, "text/plain"; also where the part says nothing, because that is what it then
    /// is.
    std::string type;
    std::string charset;
    /// As its sender wrote it, decoded, and not to be trusted; empty for none.
    base::Text file_name;
    /// Lines that begin with a blank have one too many (RFC 3676, section 4.4).
    bool space_stuffed = false;
};

/// A message taken apart (RFC 2045, 2046). What it says of itself counts for little: a boundary
/// that never comes again ends with the message, an outer one ends what is inside. What cannot be
/// read is kept as a file: a multipart inside whose first delimiter is missing with its header, and
/// what stands behind the end of a multipart when it has delimiters of it.
struct Message {
    Header header;
    std::string_view header_text;
    /// Everything behind the header.
    std::string_view body;
    /// What a reader is shown: of alternatives the plain text, HTML where there is no other.
    std::vector<Part> texts;
    /// Everything else, messages within the message among it, in the order in which it stands.
    std::vector<Part> files;
    /// False for what has no header at all, more parts than are bearable or, a multipart, no first
    /// delimiter: that is saved as it is, and there are neither texts nor files.
    bool is_taken_apart = true;
};

/// Parts within parts, and parts in all, that a message may have.
inline constexpr std::size_t deepest_nesting = 50;
inline constexpr std::size_t most_parts = 10'000;

/// Time and memory grow with `bytes`, which the result refers to.
Message parse_message(std::string_view bytes, const ports::CodePage& code_page);

/// The text of one of the message's `texts`.
base::Text text_of(const Part& part, const ports::CodePage& code_page);

}  // namespace tavrix::mail::mime
