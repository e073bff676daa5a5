// What the XML parser and the schema validator say of a document, for Polish readers.
#pragma once

#include <string>

namespace tavrix::sandbox {

struct ValidatorWords {
    /// A whole sentence, or where in the document, when the rest is in `own`.
    std::string polish;
    /// The program's own words, English, where there is no translation; otherwise empty.
    std::string own;
};

/// A detail of a status; one that neither program said comes back as it is.
ValidatorWords in_polish(const std::string& detail);

}  // namespace tavrix::sandbox
