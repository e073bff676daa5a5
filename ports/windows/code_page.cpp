#include "ports/windows/adapters.h"

#include <unordered_map>

#include "windows/automation.h"
#include "windows/bstr.h"

namespace tavrix::ports {
namespace {

class AnsiCodePage final : public CodePage {
  public:
    AnsiCodePage();
    std::uint32_t number() const override { return GetACP(); }
    std::optional<std::uint8_t> byte_of(char16_t character) const override;
    base::Bytes to_bytes(base::TextView text) const override;
    base::Text to_text(base::ByteView bytes) const override;
    bool is_single_byte() const override { return single_byte_; }
    std::optional<base::Text> decode(std::uint32_t code_page, base::ByteView bytes) const override;

  private:
    bool single_byte_ = true;
    std::unordered_map<char16_t, std::uint8_t> bytes_;
};

base::Text text_in(UINT code_page, base::ByteView bytes) {
    if (bytes.empty()) return {};
    const auto* narrow = reinterpret_cast<const char*>(bytes.data());
    const auto length = static_cast<int>(bytes.size());
    const int needed = MultiByteToWideChar(code_page, 0, narrow, length, nullptr, 0);
    base::Text text(static_cast<std::size_t>(needed), u'\0');
    MultiByteToWideChar(code_page, 0, narrow, length, reinterpret_cast<wchar_t*>(text.data()),
                        needed);
    return text;
}

// The way back is the inverse of the way in, because the system's own way back never says whether
// it fitted a character to a similar one, and treats the bytes that a code page leaves undefined
// differently from system to system.
AnsiCodePage::AnsiCodePage() {
    CPINFO information{};
    GetCPInfo(CP_ACP, &information);
    single_byte_ = information.MaxCharSize == 1;
    for (int value = 0; value < 256; ++value) {
        // In the other code pages (UTF-8, East Asian) the upper half is only parts of characters.
        if (!single_byte_ && value >= 0x80) break;
        const char byte = static_cast<char>(value);
        wchar_t character = 0;
        if (MultiByteToWideChar(CP_ACP, 0, &byte, 1, &character, 1) == 1) {
            bytes_.try_emplace(static_cast<char16_t>(character), static_cast<std::uint8_t>(value));
        }
    }
}

std::optional<std::uint8_t> AnsiCodePage::byte_of(char16_t character) const {
    const auto found = bytes_.find(character);
    if (found == bytes_.end()) return std::nullopt;
    return found->second;
}

base::Bytes AnsiCodePage::to_bytes(base::TextView text) const {
    if (text.empty()) return {};
    const auto length = static_cast<int>(text.size());
    const int needed = WideCharToMultiByte(CP_ACP, 0, windows::wide(text.data()), length, nullptr,
                                           0, nullptr, nullptr);
    base::Bytes bytes(static_cast<std::size_t>(needed));
    WideCharToMultiByte(CP_ACP, 0, windows::wide(text.data()), length,
                        reinterpret_cast<char*>(bytes.data()), needed, nullptr, nullptr);
    return bytes;
}

base::Text AnsiCodePage::to_text(base::ByteView bytes) const {
    return text_in(CP_ACP, bytes);
}

std::optional<base::Text> AnsiCodePage::decode(std::uint32_t code_page,
                                               base::ByteView bytes) const {
    if (!IsValidCodePage(code_page)) return std::nullopt;
    return text_in(code_page, bytes);
}

}  // namespace

std::unique_ptr<CodePage> make_windows_code_page() {
    return std::make_unique<AnsiCodePage>();
}

}  // namespace tavrix::ports
