#pragma once

#include <memory>

#include "ports/crypto.h"

namespace tavrix::ports {

std::unique_ptr<Crypto> make_openssl_crypto();

}  // namespace tavrix::ports
