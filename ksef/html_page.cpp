#include <algorithm>

#include "ksef/invoice_documents.h"

namespace tavrix::ksef {
namespace {

bool is_high_surrogate(char16_t c) {
    return c >= 0xD800 && c <= 0xDBFF;
}
bool is_low_surrogate(char16_t c) {
    return c >= 0xDC00 && c <= 0xDFFF;
}

// Whole characters; half of one stands for itself.
template <typename Use>
void for_each_character(base::TextView text, const Use& use) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        char32_t character = text[i];
        if (is_high_surrogate(text[i]) && i + 1 < text.size() && is_low_surrogate(text[i + 1])) {
            character = 0x10000 + ((character - 0xD800) << 10) + (text[++i] - 0xDC00u);
        }
        use(character);
    }
}

std::string bytes_in(const ports::CodePage& code_page, base::TextView page) {
    if (!code_page.is_single_byte()) {
        const base::Bytes bytes = code_page.to_bytes(page);
        return std::string(base::chars_of(bytes));
    }
    std::string bytes;
    bytes.reserve(page.size());
    for_each_character(page, [&](char32_t character) {
        const auto byte =
            character > 0xFFFF ? std::nullopt : code_page.byte_of(static_cast<char16_t>(character));
        if (byte) {
            bytes += static_cast<char>(*byte);
        } else if (character >= 0x80 && character < 0xA0) {
            // A byte that the code page leaves undefined, which a host read as it stands: part of
            // a Polish letter of UTF-8.
            bytes += static_cast<char>(character);
        } else {
            bytes += "&#" + std::to_string(static_cast<std::uint32_t>(character)) + ";";
        }
    });
    return bytes;
}

bool is_utf8_beyond_ascii(std::string_view bytes) {
    return std::ranges::any_of(bytes, [](char c) { return (c & 0x80) != 0; }) &&
           base::from_valid_utf8(bytes).has_value();
}

char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

std::size_t find_blind(std::string_view text, std::string_view word, std::size_t from) {
    const auto found = std::search(
        text.begin() + static_cast<std::ptrdiff_t>(std::min(from, text.size())), text.end(),
        word.begin(), word.end(), [](char a, char b) { return lower(a) == b; });
    return found == text.end() ? std::string_view::npos
                               : static_cast<std::size_t>(found - text.begin());
}

// Puts `name` in the place of the word behind `key` where that stands between `begin` and `end`.
void rename_encoding(std::string& page, std::string_view key, std::size_t begin, std::size_t end,
                     const std::string& name) {
    const std::size_t found = find_blind(page, key, begin);
    if (found == std::string::npos || found >= end) return;
    std::size_t word = found + key.size();
    while (word < end && (page[word] == '"' || page[word] == '\'' || page[word] == ' ')) ++word;
    const std::size_t word_end = std::min(end, page.find_first_of("\"' ;/>", word));
    page.replace(word, word_end - word, name);
}

// HTML 4 and 5 name it in an element of the head, XML in its declaration.
std::string labelled(std::string page, const std::string& name) {
    if (page.starts_with("<?xml")) rename_encoding(page, "encoding=", 0, page.find("?>"), name);
    for (std::size_t meta = find_blind(page, "<meta", 0); meta != std::string::npos;
         meta = find_blind(page, "<meta", meta + 1)) {
        const std::size_t head_end = find_blind(page, "<body", 0);
        if (meta > head_end) break;
        rename_encoding(page, "charset=", meta, page.find('>', meta), name);
    }
    return page;
}

}  // namespace

base::Bytes html_page(const ports::CodePage& code_page, base::TextView page) {
    std::string bytes = bytes_in(code_page, page);
    const bool is_utf8 = is_utf8_beyond_ascii(bytes);
    const std::string name = is_utf8 ? "utf-8" : "windows-" + std::to_string(code_page.number());
    bytes = labelled(std::move(bytes), name);
    return {bytes.begin(), bytes.end()};
}

std::string html_page_utf8(base::TextView page) {
    return labelled(base::to_utf8(page), "utf-8");
}

}  // namespace tavrix::ksef
