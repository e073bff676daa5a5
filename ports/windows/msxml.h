#pragma once

#include "ports/xml.h"

namespace tavrix::windows {

/// The XML documents of the platform, each created under its own name for each conversion.
class Msxml final : public ports::Xml {
  public:
    base::Bytes bytes_from_base64(ports::DomDocument document, base::TextView element,
                                  base::TextView base64) override;
    base::Text base64_from_bytes(ports::DomDocument document, base::TextView element,
                                 base::ByteView bytes) override;
};

}  // namespace tavrix::windows
