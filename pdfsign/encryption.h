#pragma once

#include <qpdf/QPDF.hh>
#include <string>

#include "ports/signing.h"

namespace tavrix::pdfsign {

/// How a document's strings and streams are encrypted (ISO 32000-2, 7.6); not at all in most.
class Encryption {
  public:
    /// Throws for a document whose way of encrypting is not known.
    Encryption(QPDF& document, ports::Signing& signing);

    bool is_on() const noexcept { return on_; }
    /// `plain` as it stands in the document when it belongs to the object `owner`.
    std::string string(std::string_view plain, QPDFObjGen owner) const;
    std::string stream(std::string_view plain, QPDFObjGen owner) const;

  private:
    using Method = QPDF::encryption_method_e;
    std::string encrypted(std::string_view plain, QPDFObjGen owner, Method method) const;

    ports::Signing& signing_;
    bool on_;
    int version_ = 0;
    int revision_ = 0;
    Method strings_ = QPDF::e_none;
    Method streams_ = QPDF::e_none;
    std::string key_;
};

}  // namespace tavrix::pdfsign
