#pragma once

#include "base/text.h"

namespace tavrix::ports {

/// Which of the platform's XML documents converts. On Windows the names behind these are
/// "Msxml2.DOMDocument.6.0", "MSXML2.DOMDocument.3.0" and "MSXML2.DOMDocument"; hosts can tell them
/// apart by what is installed.
enum class DomDocument { version_6, version_3, unversioned };

/// The XML component. Throws base::AutomationError when the component cannot be created or refuses
/// the text.
class Xml {
  public:
    virtual ~Xml() = default;

    /// The bytes of an element `element` of data type bin.base64 whose text is `base64`. White
    /// space between the digits is skipped.
    virtual base::Bytes bytes_from_base64(DomDocument document, base::TextView element,
                                          base::TextView base64) = 0;
    /// The text of such an element whose typed value is `bytes`, with the line breaks (LF) that the
    /// component inserts, if it does.
    virtual base::Text base64_from_bytes(DomDocument document, base::TextView element,
                                         base::ByteView bytes) = 0;
};

}  // namespace tavrix::ports
