#pragma once

#include <qpdf/QPDFObjectHandle.hh>

#include "pdfsign/encryption.h"

namespace tavrix::pdfsign {

/// "<" hexadecimal digits ">".
std::string hexadecimal(std::string_view bytes);
/// "12 0 R".
std::string reference(QPDFObjGen object);
/// At most three decimals, no exponent.
std::string decimal(double number);

/// `object` as the body of the indirect object `owner`, its strings encrypted; what it refers to
/// stays a reference. libqpdf's own text of an object has no encryption.
std::string text_of(QPDFObjectHandle object, QPDFObjGen owner, const Encryption& encryption);
/// The same for what is never encrypted: the trailer's values.
std::string plain_text_of(QPDFObjectHandle object);

}  // namespace tavrix::pdfsign
