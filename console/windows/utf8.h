#pragma once

#include <string>
#include <string_view>

namespace tavrix::console {

std::string utf8_of(std::wstring_view text);
std::wstring wide_of(std::string_view utf8);

}  // namespace tavrix::console
