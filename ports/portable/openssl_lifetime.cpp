#include "ports/portable/openssl_lifetime.h"

#include <openssl/crypto.h>

namespace tavrix::ports {

void start_openssl() {
    OPENSSL_init_crypto(OPENSSL_INIT_NO_ATEXIT, nullptr);
}

}  // namespace tavrix::ports
