// Paths out of UTF-8 and back, whatever encoding the system's narrow texts have.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace tavrix::sandbox {

inline std::filesystem::path path_of(std::string_view utf8) {
    return std::u8string(utf8.begin(), utf8.end());
}

inline std::string utf8_of(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

}  // namespace tavrix::sandbox
