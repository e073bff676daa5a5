#include "mail/literal/polish_letters.h"

#include <array>

#include "mail/mime/hex.h"

namespace tavrix::mail {
namespace {

struct Code {
    std::uint16_t code;
    char16_t letter;
};

// The list of replacements in the order in which they were once made, each over the whole text:
// single bytes as they are, those of UTF-8 as two.
constexpr Code replacements[] = {
    {0x20, u' '},   {0xA1, u'Ą'}, {0xC484, u'Ą'}, {0xB1, u'ą'}, {0xC485, u'ą'}, {0xC6, u'Ć'},
    {0xC486, u'Ć'}, {0xE6, u'ć'}, {0xC487, u'ć'}, {0xCA, u'Ę'}, {0xC498, u'Ę'}, {0xEA, u'ę'},
    {0xC499, u'ę'}, {0xA3, u'Ł'}, {0xC581, u'Ł'}, {0xB3, u'ł'}, {0xC582, u'ł'}, {0xD1, u'Ń'},
    {0xC583, u'Ń'}, {0xF1, u'ń'}, {0xC584, u'ń'}, {0xB6, u'Ś'}, {0xC59A, u'Ś'}, {0xA6, u'ś'},
    {0xC59B, u'ś'}, {0xD3, u'Ó'}, {0xC6A0, u'Ó'}, {0xF3, u'ó'}, {0xC6A1, u'ó'}, {0xAC, u'Ź'},
    {0xC5B9, u'Ź'}, {0xBC, u'ź'}, {0xC5BA, u'ź'}, {0xAF, u'Ż'}, {0xC5BB, u'Ż'}, {0xBF, u'ż'},
    {0xC5BC, u'ż'},
};

// The letter of each code that can still stand there when its turn comes: an earlier replacement
// of either of its bytes takes it apart. No replacement makes a new code, so with the rest of the
// list one look at each "=" has the effect of the whole of it.
struct Letters {
    std::array<char16_t, 256> of_one{};
    // The second byte's letter behind C4 and C5.
    std::array<std::array<char16_t, 256>, 2> of_two{};
};

constexpr Letters letters = [] {
    Letters table;
    for (const Code& code : replacements) {
        const std::uint16_t first = code.code >> 8;
        const std::uint16_t last = code.code & 0xFF;
        if (first == 0) {
            table.of_one[last] = code.letter;
        } else if (table.of_one[first] == 0 && table.of_one[last] == 0) {
            table.of_two[first - 0xC4][last] = code.letter;
        }
    }
    return table;
}();

// The number that "=" and two hexadecimal digits at `at` write; -1 when they do not stand there.
int code_at(base::TextView text, std::size_t at) {
    if (at + 3 > text.size() || text[at] != u'=' || text[at + 1] > 0x7F || text[at + 2] > 0x7F) {
        return -1;
    }
    const std::array<char, 2> digits = {static_cast<char>(text[at + 1]),
                                        static_cast<char>(text[at + 2])};
    return mime::hex_byte(digits, 0);
}

}  // namespace

base::Text with_polish_letters(base::TextView text) {
    base::Text out;
    out.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const int first = code_at(text, at);
        const int second = first == 0xC4 || first == 0xC5 ? code_at(text, at + 3) : -1;
        if (second >= 0 && letters.of_two[first - 0xC4][second] != 0) {
            out += letters.of_two[first - 0xC4][second];
            at += 6;
        } else if (first >= 0 && letters.of_one[first] != 0) {
            out += letters.of_one[first];
            at += 3;
        } else {
            out += text[at++];
        }
    }
    return out;
}

}  // namespace tavrix::mail
