#include "mail/mime/file_name.h"

#include <algorithm>

namespace tavrix::mail {
namespace {

bool is_high_surrogate(char16_t c) {
    return c >= 0xD800 && c <= 0xDBFF;
}
bool is_low_surrogate(char16_t c) {
    return c >= 0xDC00 && c <= 0xDFFF;
}

struct Range {
    char16_t first;
    char16_t last;
};

constexpr base::TextView forbidden = u"/\\:*?\"<>|";
// Control characters, and those that make a name look like another: directions and what has no
// width.
constexpr Range invisible[] = {{0x0000, 0x001F}, {0x007F, 0x009F}, {0x061C, 0x061C},
                               {0x200B, 0x200F}, {0x2028, 0x202E}, {0x2060, 0x206F},
                               {0xFEFF, 0xFEFF}, {0xFFF0, 0xFFFB}, {0xFFFE, 0xFFFF}};

bool is_harmful(char16_t c) {
    return forbidden.find(c) != base::TextView::npos ||
           std::ranges::any_of(invisible, [c](Range r) { return c >= r.first && c <= r.last; });
}

// The elements between separators that consist of dots, which would lead to other folders, and
// every harmful character. Surrogates stay in pairs.
base::Text without_harm(base::TextView name) {
    base::Text out;
    std::size_t element = 0;
    const auto end_element = [&] {
        const bool dots =
            element < out.size() && out.find_first_not_of(u'.', element) == base::Text::npos;
        if (dots) out.replace(element, base::Text::npos, u"_");
    };
    for (std::size_t i = 0; i < name.size(); ++i) {
        const char16_t c = name[i];
        if (is_high_surrogate(c) && i + 1 < name.size() && is_low_surrogate(name[i + 1])) {
            out.append(name.substr(i++, 2));
            continue;
        }
        if (c == u'/' || c == u'\\') end_element();
        out += is_harmful(c) || is_high_surrogate(c) || is_low_surrogate(c) ? u'_' : c;
        if (c == u'/' || c == u'\\') element = out.size();
    }
    end_element();
    return out;
}

constexpr base::TextView devices[] = {u"con",    u"prn",     u"aux",   u"nul",
                                      u"conin$", u"conout$", u"clock$"};

// Windows takes the name up to the first dot, without the blanks before it, for the device; the
// digits of COM1 may be superscript.
bool names_device(base::TextView name) {
    base::Text stem(base::trim(name.substr(0, name.find(u'.'))));
    std::ranges::transform(stem, stem.begin(), base::lower);
    if (std::ranges::find(devices, stem) != std::end(devices)) return true;
    constexpr base::TextView digits = u"0123456789\u00B9\u00B2\u00B3";
    return stem.size() == 4 && (stem.starts_with(u"com") || stem.starts_with(u"lpt")) &&
           digits.find(stem[3]) != base::TextView::npos;
}

std::size_t utf8_size(char16_t c) {
    if (c < 0x80) return 1;
    // A surrogate is half of four bytes.
    return c < 0x800 || is_high_surrogate(c) || is_low_surrogate(c) ? 2 : 3;
}

std::size_t utf8_size(base::TextView text) {
    std::size_t size = 0;
    for (const char16_t c : text) size += utf8_size(c);
    return size;
}

base::TextView cut(base::TextView text, std::size_t longest) {
    std::size_t size = 0;
    std::size_t end = 0;
    while (end < text.size() && size + utf8_size(text[end]) <= longest) {
        size += utf8_size(text[end++]);
    }
    if (end > 0 && end < text.size() && is_low_surrogate(text[end])) --end;
    return text.substr(0, end);
}

base::TextView without_end(base::TextView name) {
    return name.substr(0, name.find_last_not_of(u". ") + 1);
}

// Where the extension begins, with its dot; the name's end where it has none that deserves it.
std::size_t extension_of(base::TextView name) {
    constexpr std::size_t longest_extension = 16;
    const std::size_t dot = name.rfind(u'.');
    const bool is_one =
        dot != base::TextView::npos && dot > 0 && name.size() - dot <= longest_extension;
    return is_one ? dot : name.size();
}

// The name with `addition` before its extension, the stem cut to what fits.
base::Text fitted(base::TextView name, base::TextView addition, std::size_t longest) {
    const std::size_t dot = extension_of(name);
    const base::TextView extension = name.substr(dot);
    base::TextView stem = name.substr(0, dot);
    const std::size_t rest = addition.size() + utf8_size(extension);
    if (utf8_size(stem) + rest > longest) {
        stem = without_end(cut(stem, longest > rest ? longest - rest : 0));
        if (stem.empty()) stem = u"_";
    }
    return base::Text(stem).append(addition).append(extension);
}

}  // namespace

base::Text harmless_file_name(base::TextView name, std::size_t longest) {
    const base::Text clean = without_harm(name);
    const base::TextView ended = without_end(clean);
    base::Text result(ended.empty() ? u"_" : ended);
    if (names_device(result)) result.insert(0, 1, u'_');
    return fitted(result, {}, longest);
}

std::size_t longest_name_in(base::TextView folder) noexcept {
    constexpr std::size_t longest_path = 259;
    // In a folder that is hardly any shorter the host is at its limits anyway.
    constexpr std::size_t least = 40;
    const std::size_t room =
        folder.size() + least < longest_path ? longest_path - folder.size() : least;
    return std::min(room, longest_file_name);
}

base::Text DistinctNames::take(const base::Text& name) {
    const auto key = [](base::Text text) {
        std::ranges::transform(text, text.begin(), base::lower);
        return text;
    };
    if (taken_.insert(key(name)).second) return name;
    // Names that only the cut makes equal count together: each would try the others' numbers.
    const base::Text cut_for_any_number = key(fitted(name, u" (00000)", longest_));
    int& number = last_number_.try_emplace(cut_for_any_number, 1).first->second;
    for (;;) {
        ++number;
        base::Text numbered = fitted(name, u" (" + base::to_decimal(number) + u")", longest_);
        if (taken_.insert(key(numbered)).second) return numbered;
    }
}

}  // namespace tavrix::mail
