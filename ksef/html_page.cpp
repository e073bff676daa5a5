#include <algorithm>
#include <optional>
#include <vector>

#include "ksef/invoice_documents.h"

namespace tavrix::ksef {
namespace {

bool is_high_surrogate(char16_t c) {
    return c >= 0xD800 && c <= 0xDBFF;
}
bool is_low_surrogate(char16_t c) {
    return c >= 0xDC00 && c <= 0xDFFF;
}

// One character of a page, and its byte in the code page where it has one.
struct Place {
    char32_t character;
    std::optional<std::uint8_t> byte;
};

// Half a surrogate pair stands for itself. A byte that the code page leaves undefined is one that a
// host read as it stands: part of a Polish letter of UTF-8.
std::vector<Place> places_of(const ports::CodePage& code_page, base::TextView page) {
    std::vector<Place> places;
    places.reserve(page.size());
    for (std::size_t i = 0; i < page.size(); ++i) {
        Place place{page[i], code_page.byte_of(page[i])};
        if (!place.byte && page[i] >= 0x80 && page[i] < 0xA0)
            place.byte = static_cast<std::uint8_t>(page[i]);
        if (is_high_surrogate(page[i]) && i + 1 < page.size() && is_low_surrogate(page[i + 1]))
            place.character = 0x10000 + ((place.character - 0xD800) << 10) + (page[++i] - 0xDC00u);
        places.push_back(place);
    }
    return places;
}

// How many places from `at` on are the bytes of one character beyond ASCII in UTF-8; 0 for none.
std::size_t utf8_length(const std::vector<Place>& places, std::size_t at) {
    const std::uint8_t lead = places[at].byte.value_or(0);
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC2 ? 2 : 0;
    if (length == 0 || at + length > places.size()) return 0;
    std::string bytes;
    for (std::size_t i = at; i < at + length; ++i) {
        if (!places[i].byte) return 0;
        bytes += static_cast<char>(*places[i].byte);
    }
    return base::from_valid_utf8(bytes) ? length : 0;
}

// Whether a host read the page, or the document that it shows, one character for each byte of
// UTF-8. Capital letters of ordinary Polish look like it here and there ("MĘŻA"), but then as
// letters that nobody writes; references in the document or its stylesheet stand between such bytes
// as what they are.
bool holds_utf8(const ports::CodePage& code_page, const std::vector<Place>& places) {
    std::size_t for_it = 0;
    std::size_t against_it = 0;
    for (std::size_t i = 0; i < places.size();) {
        if (places[i].character < 0x80) {
            ++i;
            continue;
        }
        const std::size_t length = utf8_length(places, i);
        std::string bytes;
        for (std::size_t k = i; k < i + length; ++k) bytes += static_cast<char>(*places[k].byte);
        const base::Text letter = base::from_utf8(bytes);
        const bool is_usual = letter.size() == 1 && code_page.byte_of(letter[0]);
        ++(is_usual ? for_it : against_it);
        i += std::max<std::size_t>(length, 1);
    }
    return for_it > against_it;
}

void put_reference(std::string& bytes, char32_t character) {
    bytes += "&#" + std::to_string(static_cast<std::uint32_t>(character)) + ";";
}

std::string utf8_again(const std::vector<Place>& places) {
    std::string bytes;
    for (std::size_t i = 0; i < places.size();) {
        const std::size_t length = utf8_length(places, i);
        if (places[i].character >= 0x80 && length == 0) {
            put_reference(bytes, places[i++].character);
            continue;
        }
        for (const std::size_t end = i + std::max<std::size_t>(length, 1); i < end; ++i)
            bytes += static_cast<char>(*places[i].byte);
    }
    return bytes;
}

std::string in_code_page(const std::vector<Place>& places) {
    std::string bytes;
    for (const Place& place : places) {
        if (place.byte) {
            bytes += static_cast<char>(*place.byte);
        } else {
            put_reference(bytes, place.character);
        }
    }
    return bytes;
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
    const std::size_t found =
        find_blind(std::string_view(page).substr(0, std::min(end, page.size())), key, begin);
    if (found == std::string::npos) return;
    std::size_t word = found + key.size();
    while (word < end && (page[word] == '"' || page[word] == '\'' || page[word] == ' ')) ++word;
    const std::size_t word_end = std::min(end, page.find_first_of("\"' ;/>", word));
    page.replace(word, word_end - word, name);
}

// HTML 4 and 5 name it in an element of the head, XML in its declaration.
std::string labelled(std::string page, const std::string& name) {
    if (page.starts_with("<?xml")) rename_encoding(page, "encoding=", 0, page.find("?>"), name);
    std::string head = page.substr(0, find_blind(page, "<body", 0));
    const std::size_t head_size = head.size();
    for (std::size_t meta = find_blind(head, "<meta", 0); meta != std::string::npos;
         meta = find_blind(head, "<meta", meta + 1)) {
        rename_encoding(head, "charset=", meta, head.find('>', meta), name);
    }
    return head + page.substr(head_size);
}

}  // namespace

base::Bytes html_page(const ports::CodePage& code_page, base::TextView page) {
    if (!code_page.is_single_byte()) {
        const base::Bytes bytes = code_page.to_bytes(page);
        std::string text(base::chars_of(bytes));
        const std::string name =
            base::from_valid_utf8(text) ? "utf-8" : "windows-" + std::to_string(code_page.number());
        text = labelled(std::move(text), name);
        return {text.begin(), text.end()};
    }
    const std::vector<Place> places = places_of(code_page, page);
    const bool is_utf8 = holds_utf8(code_page, places);
    const std::string bytes =
        labelled(is_utf8 ? utf8_again(places) : in_code_page(places),
                 is_utf8 ? "utf-8" : "windows-" + std::to_string(code_page.number()));
    return {bytes.begin(), bytes.end()};
}

std::string html_page_utf8(base::TextView page) {
    return labelled(base::to_utf8(page), "utf-8");
}

}  // namespace tavrix::ksef
