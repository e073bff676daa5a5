#pragma once

#include <span>
#include <vector>

#include "base/secret.h"
#include "ports/portable/openssl_owners.h"

namespace tavrix::ports::openssl {

/// OpenSSL with the algorithms of older PFX files besides its usual ones, for nobody else in the
/// process.
class LegacyLibrary {
  public:
    LegacyLibrary();
    OSSL_LIB_CTX* get() const noexcept { return library_.get(); }

  private:
    Library library_;
    Provider usual_;
    Provider legacy_;
};

struct Pfx {
    Key key;
    Certificate certificate;
    /// Everything else that was there, without the self-signed ones.
    Certificates chain;
};

/// Throws base::AutomationError for a file that none of the passwords opens, or that has no key
/// with a certificate.
Pfx read_pfx(const LegacyLibrary& library, base::ByteView file,
             std::span<const base::SecretBytes> passwords);

}  // namespace tavrix::ports::openssl
