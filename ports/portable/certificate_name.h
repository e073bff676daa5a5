#pragma once

#include "base/text.h"
#include "ports/portable/openssl_owners.h"

namespace tavrix::ports::openssl {

/// What a person would call whom `name` is about: the last common name, else given name and
/// surname, else organisation, else e-mail; "" when there is none of them.
base::Text name_for_people(const X509_NAME* name);

}  // namespace tavrix::ports::openssl
