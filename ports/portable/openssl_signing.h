#pragma once

#include <memory>

#include "ports/signing.h"

namespace tavrix::ports {

std::unique_ptr<Signing> make_openssl_signing();

}  // namespace tavrix::ports
