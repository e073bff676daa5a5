#pragma once

#include <unordered_map>

#include "ports/code_page.h"

namespace tavrix::windows {

/// The code page that the system is set to, whichever it is.
class AnsiCodePage final : public ports::CodePage {
  public:
    AnsiCodePage();
    std::optional<std::uint8_t> byte_of(char16_t character) const override;
    base::Bytes to_bytes(base::TextView text) const override;
    base::Text to_text(base::ByteView bytes) const override;
    bool is_single_byte() const override { return single_byte_; }

  private:
    bool single_byte_ = true;
    std::unordered_map<char16_t, std::uint8_t> bytes_;
};

}  // namespace tavrix::windows
