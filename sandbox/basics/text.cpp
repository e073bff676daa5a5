#include "sandbox/basics/text.h"

namespace tavrix::sandbox {
namespace {

int hex_digit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return -1;
}

struct PolishLetter {
    std::string_view small, large;
    char plain;
};
constexpr PolishLetter polish_letters[] = {{"ą", "Ą", 'a'}, {"ć", "Ć", 'c'}, {"ę", "Ę", 'e'},
                                           {"ł", "Ł", 'l'}, {"ń", "Ń", 'n'}, {"ó", "Ó", 'o'},
                                           {"ś", "Ś", 's'}, {"ź", "Ź", 'z'}, {"ż", "Ż", 'z'}};

void replace_all(std::string& text, std::string_view from, std::string_view to) {
    for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size())
        text.replace(at, from.size(), to);
}

}  // namespace

std::string lower(std::string text) {
    for (char& c : text)
        if (c >= 'A' && c <= 'Z') c = char(c - 'A' + 'a');
    return text;
}

std::string upper(std::string text) {
    for (char& c : text)
        if (c >= 'a' && c <= 'z') c = char(c - 'a' + 'A');
    return text;
}

std::string lower_polish(std::string text) {
    text = lower(std::move(text));
    for (const PolishLetter& letter : polish_letters) replace_all(text, letter.large, letter.small);
    return text;
}

std::string ascii_folded(std::string_view text) {
    std::string result(text);
    for (const PolishLetter& letter : polish_letters) {
        replace_all(result, letter.small, {&letter.plain, 1});
        replace_all(result, letter.large, upper({letter.plain}));
    }
    std::erase_if(result, [](char c) { return (c & 0x80) != 0; });
    return result;
}

// One pass: everything that the sandbox remembers goes through it.
std::string search_folded(std::string_view text) {
    std::string result(text.size(), '\0');
    std::size_t size = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        // All of the letters are two bytes long and begin with one of these.
        const PolishLetter* letter = nullptr;
        if (c == '\xC3' || c == '\xC4' || c == '\xC5')
            for (const PolishLetter& known : polish_letters)
                if (text.substr(i, 2) == known.small || text.substr(i, 2) == known.large)
                    letter = &known;
        if (letter != nullptr) ++i;
        result[size++] = letter != nullptr      ? letter->plain
                         : c >= 'A' && c <= 'Z' ? char(c + 32)
                                                : c;
    }
    result.resize(size);
    return result;
}

std::size_t character_count(std::string_view text) {
    return std::size_t(
        std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xC0) != 0x80; }));
}

std::string percent_decode(std::string_view text, bool plus_is_space) {
    std::string result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%' && i + 2 < text.size() && hex_digit(text[i + 1]) >= 0 &&
            hex_digit(text[i + 2]) >= 0) {
            result += char(hex_digit(text[i + 1]) * 16 + hex_digit(text[i + 2]));
            i += 2;
        } else {
            result += plus_is_space && text[i] == '+' ? ' ' : text[i];
        }
    }
    return result;
}

std::string percent_encode(std::string_view text) {
    constexpr std::string_view unreserved =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~";
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string result;
    for (const char c : text) {
        if (unreserved.find(c) != std::string_view::npos) {
            result += c;
        } else {
            const auto byte = static_cast<unsigned char>(c);
            result += '%';
            result += digits[byte >> 4];
            result += digits[byte & 15];
        }
    }
    return result;
}

}  // namespace tavrix::sandbox
