#pragma once

#include "pdfsign/sign.h"

namespace tavrix::pdfsign {

/// What goes behind a document to sign it, all but the signature itself.
struct SignatureUpdate {
    std::string text;
    /// Where "<" of the signature's place is in `text`, and where what follows its ">".
    std::size_t gap_begins = 0;
    std::size_t gap_ends = 0;
};

struct SignatureContent {
    Profile profile;
    base::Text name;
    base::DateTime local;
    base::DateTime utc;
    /// Room for the signature.
    std::size_t bytes;
};

/// Adds a signed field with its box in the first page's top left corner as it is shown, below other
/// boxes that stand there. The ByteRange is set.
SignatureUpdate make_signature_update(OpenDocument& document, ports::Signing& signing,
                                      const SignatureContent& content);

}  // namespace tavrix::pdfsign
