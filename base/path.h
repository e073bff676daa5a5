#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace tavrix::base {

/// A path out of UTF-8. The standard library's own way reads narrow texts in whatever encoding the
/// process has, which is UTF-8 on one system and not on the other.
inline std::filesystem::path path_of(std::string_view utf8) {
    return std::u8string(utf8.begin(), utf8.end());
}

inline std::string utf8_of(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

}  // namespace tavrix::base
