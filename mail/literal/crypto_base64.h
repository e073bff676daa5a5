#pragma once

#include "base/text.h"
#include "ports/system_version.h"

namespace tavrix::mail {

/// Base64 as the system's CryptoAPI reads and writes it (CryptStringToBinaryW and
/// CryptBinaryToStringW with CRYPT_STRING_BASE64), the same on every system. Errors have this
/// class's numbers and name their method as the source.
class CryptoBase64 {
  public:
    /// Throws base::AutomationError when the system's version cannot be told or is not NT.
    explicit CryptoBase64(const ports::SystemVersion& system);

    /// 100 times the system's major version and its minor one.
    std::int32_t OSVersion() const noexcept { return os_version_; }

    /// Lines of the encoded text: 0 ends them by CR LF every 64 letters, 1 makes none, 2 ends them
    /// by LF. Anything else is 0. Throws where the system is too old for the format.
    std::int32_t Base64Format() const noexcept;
    void set_Base64Format(std::int32_t format);

    /// Blanks and line ends do not matter, nor whatever stands behind the padding. The padding may
    /// be missing, but what there is of it must be whole; then even a single letter gives a byte.
    /// Throws for any other character.
    base::Bytes Decode(base::TextView text) const;
    /// Throws for no bytes, as the system does.
    base::Text Encode(base::ByteView bytes) const;

  private:
    std::int32_t os_version_;
    std::uint32_t flags_ = 0;
};

}  // namespace tavrix::mail
