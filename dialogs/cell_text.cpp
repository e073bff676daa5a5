#include "dialogs/cell_text.h"

#include <algorithm>
#include <charconv>

namespace tavrix::dialogs {
namespace {

using base::Text;

constexpr std::size_t longest_cell = 4000;
constexpr std::size_t most_bytes_shown = 32;

struct CellText {
    Text operator()(std::monostate) const { return {}; }
    Text operator()(bool value) const { return value ? u"tak" : u"nie"; }
    Text operator()(double value) const {
        // The shortest digits that are this number and no other.
        char digits[40];
        const auto written =
            std::to_chars(std::begin(digits), std::end(digits), value == 0 ? 0.0 : value);
        std::replace(digits, written.ptr, '.', ',');
        return Text(digits, written.ptr);
    }
    Text operator()(const Text& value) const {
        if (value.size() <= longest_cell) return value;
        return Text(cut_whole(value, longest_cell)) + u"…";
    }
    Text operator()(const base::Bytes& value) const {
        constexpr char16_t hexadecimal[] = u"0123456789ABCDEF";
        Text text = u"0x";
        for (std::size_t i = 0; i < std::min(value.size(), most_bytes_shown); ++i) {
            text += hexadecimal[value[i] >> 4];
            text += hexadecimal[value[i] & 15];
        }
        if (value.size() > most_bytes_shown) text += u'…';
        return text;
    }
    // Whole numbers, and dates without a midnight's time.
    Text operator()(const auto& value) const { return ports::text_of(value); }
};

}  // namespace

base::TextView cut_whole(base::TextView text, std::size_t most) {
    if (text.size() <= most) return text;
    const char16_t last = text[most - 1];
    return text.substr(0, last >= 0xD800 && last < 0xDC00 ? most - 1 : most);
}

std::optional<Text> cell_text(const ports::Value& value) {
    if (std::holds_alternative<std::monostate>(value)) return std::nullopt;
    return std::visit(CellText{}, value);
}

Text one_line(base::TextView text) {
    Text line = base::replace_all(text, u"\r\n", u"\n");
    for (char16_t& c : line) {
        if (c == u'\n' || c == u'\r') {
            c = u'¶';
        } else if (c < u' ') {
            c = u' ';
        }
    }
    return line;
}

}  // namespace tavrix::dialogs
