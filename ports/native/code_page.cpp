#include "base/windows_1250.h"
#include "ports/native/adapters.h"

namespace tavrix::ports {
namespace {

class Windows1250 final : public CodePage {
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
        base::Text text;
        text.reserve(bytes.size());
        for (const std::uint8_t byte : bytes) text += base::windows_1250[byte];
        return text;
    }
};

}  // namespace

std::unique_ptr<CodePage> make_native_code_page() {
    return std::make_unique<Windows1250>();
}

}  // namespace tavrix::ports
