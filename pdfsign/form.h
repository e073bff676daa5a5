#pragma once

#include <qpdf/QPDF.hh>
#include <set>
#include <string>
#include <vector>

namespace tavrix::pdfsign {

/// A field that is signed.
struct SignedField {
    std::string name;  // UTF-8
    QPDFObjectHandle signature;
};

/// What a document's form (ISO 32000-2, 12.7) has to do with signing.
struct Form {
    /// Null when there is none.
    QPDFObjectHandle dictionary;
    /// Of the fields at the form's top, in UTF-8.
    std::set<std::string> names;
    std::vector<SignedField> signatures;
    /// Each field has its own appearance, so no reader need make one.
    bool is_drawn = true;
    /// The document certifies that nothing at all is changed any more (12.8.2.2).
    bool is_closed = false;
    /// Its pages exist only in the program of one maker (XFA).
    bool is_dynamic = false;
};

Form read_form(QPDF& document);

}  // namespace tavrix::pdfsign
