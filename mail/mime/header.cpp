#include "mail/mime/header.h"

#include <algorithm>
#include <cstring>

namespace tavrix::mail::mime {
namespace {

char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
}

bool is_blank(char c) {
    return c == ' ' || c == '\t';
}

// RFC 5322, section 2.2.3: the line ends go, the white space that makes the next line a
// continuation stays.
std::string unfolded(std::string_view value) {
    std::string text;
    text.reserve(value.size());
    for (const char c : value) {
        if (c != '\r' && c != '\n') text += c;
    }
    return std::string(trimmed(text));
}

}  // namespace

std::string_view take_line(std::string_view bytes, std::size_t& at) noexcept {
    const std::size_t begin = at;
    const void* const found = std::memchr(bytes.data() + begin, '\n', bytes.size() - begin);
    std::size_t end = bytes.size();
    at = end;
    if (found != nullptr) {
        end = static_cast<std::size_t>(static_cast<const char*>(found) - bytes.data());
        at = end + 1;
        if (end > begin && bytes[end - 1] == '\r') --end;
    }
    return bytes.substr(begin, end - begin);
}

bool same_name(std::string_view left, std::string_view right) noexcept {
    return std::ranges::equal(left, right, {}, lower, lower);
}

std::string_view trimmed(std::string_view text) noexcept {
    constexpr std::string_view blanks = " \t\r\n";
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::string lower_case(std::string_view text) {
    std::string result(text);
    std::ranges::transform(result, result.begin(), lower);
    return result;
}

bool add_header_line(Header& header, std::string_view line) {
    if (is_blank(line.front())) {
        if (header.fields.empty()) return false;
        std::string_view& value = header.fields.back().value;
        // Both are views into one message.
        const char* const end = line.data() + line.size();
        value = {value.data(), static_cast<std::size_t>(end - value.data())};
        return true;
    }
    const std::size_t colon = line.find(':');
    if (colon == std::string_view::npos || colon == 0) return false;
    const std::string_view name = trimmed(line.substr(0, colon));
    // A name is one word; "From somebody Sat Jan  1 00:00:00" is the first line of a mailbox file.
    if (name.find_first_of(" \t") != std::string_view::npos) return false;
    header.fields.push_back({name, line.substr(colon + 1)});
    return true;
}

std::optional<std::string> Header::first(std::string_view name) const {
    const auto found = std::ranges::find_if(
        fields, [&](const Field& field) { return same_name(field.name, name); });
    if (found == fields.end()) return std::nullopt;
    return unfolded(found->value);
}

std::optional<std::string> Header::last(std::string_view name) const {
    for (auto field = fields.rbegin(); field != fields.rend(); ++field) {
        if (same_name(field->name, name)) return unfolded(field->value);
    }
    return std::nullopt;
}

}  // namespace tavrix::mail::mime
