// What several rooms do with text.
#pragma once

#include <algorithm>
#include <charconv>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>

namespace tavrix::sandbox {

/// The text with its ASCII letters in lower or in upper case.
std::string lower(std::string text);
std::string upper(std::string text);
/// The same for a text in UTF-8, Polish letters included: what people search descriptions with.
std::string lower_polish(std::string text);

/// A text in UTF-8 with Polish letters as their ASCII neighbours and every other foreign one gone.
std::string ascii_folded(std::string_view text);

/// The same in lower case, other foreign letters as they are: what texts are compared by when
/// somebody searches.
std::string search_folded(std::string_view text);

/// How many characters, not bytes, a text in UTF-8 has.
std::size_t character_count(std::string_view text);

/// The number a text consists of; nothing when anything else stands in it or it does not fit.
template <typename Number>
std::optional<Number> number_of(std::string_view text) {
    Number number = 0;
    const char* end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, number);
    if (read.ec != std::errc() || read.ptr != end) return std::nullopt;
    return number;
}

/// True when a list holds a value.
template <typename List, typename Value>
bool contains(const List& list, const Value& value) {
    return std::find(std::begin(list), std::end(list), value) != std::end(list);
}

/// Undoes percent-encoding; a broken escape stays as it is.
std::string percent_decode(std::string_view text, bool plus_is_space = false);
std::string percent_encode(std::string_view text);

}  // namespace tavrix::sandbox
