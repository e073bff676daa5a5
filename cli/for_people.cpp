#include "cli/for_people.h"

#include <algorithm>

namespace tavrix::cli {

std::string for_people(const base::Text& text) {
    base::Text clean = base::replace_all(text, u"\r\n", u"\n");
    std::ranges::replace_if(
        clean,
        [](char16_t c) {
            const bool is_control = c < 0x20 || (c >= 0x7F && c <= 0x9F);
            return is_control && c != u'\n' && c != u'\t';
        },
        u'\xFFFD');
    return base::to_utf8(clean);
}

std::string line_for_people(const base::Text& text) {
    std::string line = for_people(text);
    std::ranges::replace_if(
        line, [](char c) { return c == '\n' || c == '\t'; }, ' ');
    return line;
}

}  // namespace tavrix::cli
