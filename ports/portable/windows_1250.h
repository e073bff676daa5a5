#pragma once

#include "base/windows_1250.h"
#include "ports/code_page.h"

namespace tavrix::ports {

/// Code page 1250 by its table, whatever the system is set to. What reads other code pages is each
/// system's own.
class Windows1250 : public CodePage {
  public:
    std::optional<std::uint8_t> byte_of(char16_t character) const override {
        return base::windows_1250_byte(character);
    }

    base::Bytes to_bytes(base::TextView text) const override {
        base::Bytes bytes;
        bytes.reserve(text.size());
        for (const char16_t c : text) bytes.push_back(byte_of(c).value_or(std::uint8_t{'?'}));
        return bytes;
    }

    base::Text to_text(base::ByteView bytes) const override {
        base::Text text(bytes.size(), u'\0');
        for (std::size_t i = 0; i < bytes.size(); ++i) text[i] = base::windows_1250[bytes[i]];
        return text;
    }
};

}  // namespace tavrix::ports
