#pragma once

#include "base/profile.h"
#include "mail/literal/boundary_lines.h"

namespace tavrix::mail {

/// What the header of one part says.
struct PartHeader {
    /// Of one of the types that are taken; parts of others are left out.
    bool is_accepted = false;
    /// Has a name somewhere: then it is a file, and otherwise text.
    bool is_file = false;
    /// Between its quotation marks; empty when there is none that can be used.
    base::Text file_name;
    /// Of the line that says how the part's bytes are written down, and of the one that says what
    /// they are.
    base::Text transfer_encoding;
    base::Text content_type;
};

/// Takes the lines of the header, and the empty one that ends it. A line that ends with ";" is one
/// with the next.
///
/// A file's name is what a line with "name=" has behind its "=", without its first and its last
/// character: those are the quotation marks. The last such line counts, up to the one with the word
/// "attachment". The profile `current` takes nothing away from a name without quotation marks.
PartHeader read_part_header(Lines& lines, base::Profile profile);

}  // namespace tavrix::mail
