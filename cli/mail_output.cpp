#include "cli/mail_output.h"

#include <algorithm>

namespace tavrix::cli {

std::vector<std::string> files_of(const mail::CMessage& message) {
    std::vector<std::string> files;
    for (const base::Text& file : base::split(message.Files(), u';')) {
        if (!file.empty()) files.push_back(base::to_utf8(file));
    }
    return files;
}

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

}  // namespace tavrix::cli
