#include <iconv.h>

#include <array>
#include <map>

#include "ports/native/adapters.h"
#include "ports/portable/windows_1250.h"

namespace tavrix::ports {
namespace {

// The system's name of a code page that Windows knows by a number.
std::string name_of(std::uint32_t code_page) {
    if (code_page > 28590 && code_page <= 28606) {
        return "ISO-8859-" + std::to_string(code_page - 28590);
    }
    switch (code_page) {
        case 20866:
            return "KOI8-R";
        case 21866:
            return "KOI8-U";
        case 50220:
            return "ISO-2022-JP";
        case 51932:
            return "EUC-JP";
        case 51949:
            return "EUC-KR";
        case 54936:
            return "GB18030";
        case 65000:
            return "UTF-7";
        default:
            return "CP" + std::to_string(code_page);
    }
}

class Converter {
  public:
    explicit Converter(std::uint32_t code_page)
        : descriptor_(iconv_open("UTF-16LE", name_of(code_page).c_str())) {}
    ~Converter() {
        if (known()) iconv_close(descriptor_);
    }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    bool known() const { return descriptor_ != reinterpret_cast<iconv_t>(-1); }

    // What is no character becomes U+FFFD, byte for byte.
    base::Text convert(base::ByteView bytes) const {
        iconv(descriptor_, nullptr, nullptr, nullptr, nullptr);
        base::Text text;
        // iconv takes the address of what it does not write to.
        char* from = const_cast<char*>(base::chars_of(bytes).data());
        std::size_t left = bytes.size();
        while (left > 0) {
            std::array<char16_t, 1024> piece;
            char* to = reinterpret_cast<char*>(piece.data());
            std::size_t room = sizeof piece;
            const std::size_t before = left;
            const bool stuck =
                iconv(descriptor_, &from, &left, &to, &room) == static_cast<std::size_t>(-1) &&
                errno != E2BIG;
            text.append(piece.data(), (sizeof piece - room) / sizeof(char16_t));
            if (!stuck && left < before) continue;
            if (left == 0) break;
            text += u'\xFFFD';
            ++from;
            --left;
        }
        return text;
    }

  private:
    iconv_t descriptor_;
};

// Opening a converter takes the system longer than converting a message's texts.
class Converters {
  public:
    const Converter& of(std::uint32_t code_page) {
        return known_.try_emplace(code_page, code_page).first->second;
    }

  private:
    std::map<std::uint32_t, Converter> known_;
};

class NativeCodePage final : public Windows1250 {
  public:
    std::optional<base::Text> decode(std::uint32_t code_page, base::ByteView bytes) const override {
        if (code_page == 1250) return to_text(bytes);
        const Converter& converter = converters_.of(code_page);
        if (!converter.known()) return std::nullopt;
        return converter.convert(bytes);
    }

  private:
    mutable Converters converters_;
};

}  // namespace

std::unique_ptr<CodePage> make_native_code_page() {
    return std::make_unique<NativeCodePage>();
}

}  // namespace tavrix::ports
