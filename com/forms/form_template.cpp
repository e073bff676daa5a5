#include "com/forms/form_template.h"

#include <cstring>
#include <optional>
#include <span>
#include <string_view>

#include "com/module.h"
#include "windows/gdi.h"

namespace tavrix::com {
namespace {

struct UserFont {
    LOGFONTW font;
    WORD points;
};

std::span<const std::byte> find_template(int number) noexcept {
    const HRSRC found = FindResourceW(module_handle(), MAKEINTRESOURCEW(number),
                                      MAKEINTRESOURCEW(5 /* a dialog */));
    if (found == nullptr) return {};
    const HGLOBAL loaded = LoadResource(module_handle(), found);
    return {static_cast<const std::byte*>(LockResource(loaded)),
            SizeofResource(module_handle(), found)};
}

std::optional<UserFont> user_message_font() noexcept {
    NONCLIENTMETRICSW metrics{};
    metrics.cbSize = sizeof metrics;
    if (!SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0)) return {};
    const windows::GdiFont font(CreateFontIndirectW(&metrics.lfMessageFont));
    const windows::MemoryDevice screen(CreateCompatibleDC(nullptr));
    const windows::Selected selected(screen.get(), font.get());
    TEXTMETRICW measured{};
    if (!GetTextMetricsW(screen.get(), &measured)) return {};
    const int points = MulDiv(measured.tmHeight - measured.tmInternalLeading, 72,
                              GetDeviceCaps(screen.get(), LOGPIXELSY));
    return UserFont{metrics.lfMessageFont, static_cast<WORD>(points)};
}

// A template's reader: what stands where is DLGTEMPLATEEX in the system's documentation.
class Position {
  public:
    explicit Position(std::span<const std::byte> bytes) noexcept : bytes_(bytes) {}
    std::size_t value() const noexcept { return at_; }
    void skip(std::size_t bytes) noexcept { at_ += bytes; }
    void skip_text() noexcept {
        while (take_word() != 0) {
        }
    }
    // A menu or a window class: none, a number behind a mark, or a text.
    void skip_name() noexcept {
        const WORD first = take_word();
        if (first == 0xFFFF) {
            take_word();
        } else if (first != 0) {
            skip_text();
        }
    }
    void align_to_controls() noexcept { at_ = (at_ + 3) / 4 * 4; }

  private:
    WORD take_word() noexcept {
        if (bytes_.size() - at_ < sizeof(WORD)) return 0;
        WORD word = 0;
        std::memcpy(&word, bytes_.data() + at_, sizeof word);
        at_ += sizeof word;
        return word;
    }

    std::span<const std::byte> bytes_;
    std::size_t at_ = 0;
};

void append(std::vector<std::byte>& bytes, const void* data, std::size_t size) {
    const auto* first = static_cast<const std::byte*>(data);
    bytes.insert(bytes.end(), first, first + size);
}

void append_font(std::vector<std::byte>& bytes, const UserFont& user) {
    const auto weight = static_cast<WORD>(user.font.lfWeight);
    append(bytes, &user.points, sizeof user.points);
    append(bytes, &weight, sizeof weight);
    append(bytes, &user.font.lfItalic, 1);
    append(bytes, &user.font.lfCharSet, 1);
    const std::wstring_view face = user.font.lfFaceName;
    append(bytes, user.font.lfFaceName, (face.size() + 1) * sizeof(wchar_t));
}

}  // namespace

std::vector<std::byte> template_in_user_font(int number) {
    const std::span<const std::byte> original = find_template(number);
    const std::optional<UserFont> user = user_message_font();
    if (!user) return {original.begin(), original.end()};

    constexpr std::size_t before_the_menu = 26;
    Position position(original);
    position.skip(before_the_menu);
    position.skip_name();
    position.skip_name();
    position.skip_text();
    const std::size_t font_begins = position.value();
    // Size, weight, slant and character set; the face.
    position.skip(6);
    position.skip_text();
    position.align_to_controls();
    if (position.value() > original.size()) return {};

    std::vector<std::byte> changed(original.begin(), original.begin() + font_begins);
    append_font(changed, *user);
    changed.resize((changed.size() + 3) / 4 * 4);
    append(changed, original.data() + position.value(), original.size() - position.value());
    return changed;
}

}  // namespace tavrix::com
