#include "barcode/code128.h"

namespace tavrix::barcode {
namespace {

using code128::values;

enum class CodeSet : std::uint8_t { a, b, c };

constexpr bool is_digit(char16_t character) noexcept {
    return character >= u'0' && character <= u'9';
}

bool digits_ahead(base::TextView text, std::size_t count) noexcept {
    if (text.size() < count) return false;
    for (std::size_t i = 0; i < count; ++i) {
        if (!is_digit(text[i])) return false;
    }
    return true;
}

/// The value of one character in set A: control characters stand behind the printable ones.
constexpr int value_in_a(char16_t character) noexcept {
    if (character < 32) return character + 64;
    return character < 96 ? character - 32 : -1;
}
constexpr int value_in_b(char16_t character) noexcept {
    return character >= 32 && character < 128 ? character - 32 : -1;
}

/// The value of a token, which is one character or a pair of digits; -1 when the set has none.
int value_in(base::TextView text, CodeSet set) noexcept {
    if (text.size() == 1 && set != CodeSet::c) {
        return set == CodeSet::a ? value_in_a(text[0]) : value_in_b(text[0]);
    }
    if (text.size() == 2 && set == CodeSet::c && digits_ahead(text, 2)) {
        return (text[0] - u'0') * 10 + (text[1] - u'0');
    }
    return -1;
}

constexpr std::array<CodeSet, 2> other_sets(CodeSet set) noexcept {
    switch (set) {
        case CodeSet::a:
            return {CodeSet::c, CodeSet::b};
        case CodeSet::b:
            return {CodeSet::a, CodeSet::c};
        default:
            return {CodeSet::b, CodeSet::a};
    }
}

/// The value that `token` has in `set`, or failing that in the other ones.
int value_in_any(base::TextView token, CodeSet set) noexcept {
    int value = value_in(token, set);
    for (const CodeSet other : other_sets(set)) {
        if (value < 0) value = value_in(token, other);
    }
    return value;
}

int switch_value(CodeSet to) noexcept {
    return to == CodeSet::a   ? code128::code_a
           : to == CodeSet::b ? code128::code_b
                              : code128::code_c;
}

/// The set in which a token of this value is written: the current one where it will do, B before A
/// before C where it will not.
CodeSet set_for(base::TextView token, int value, CodeSet current) noexcept {
    const bool in_a = value_in(token, CodeSet::a) == value;
    const bool in_b = value_in(token, CodeSet::b) == value;
    const bool in_c = value_in(token, CodeSet::c) == value;
    if (in_b && ((current == CodeSet::c && !in_c) || (current == CodeSet::a && !in_a))) {
        return CodeSet::b;
    }
    if (in_a && !in_b) return CodeSet::a;
    return in_c ? CodeSet::c : current;
}

/// Collects the values and their weighted sum.
class SymbolWriter {
  public:
    SymbolWriter(int start, std::size_t text_length) : sum_(start) {
        symbol_.reserve(text_length + 8);
        symbol_.push_back(static_cast<std::uint8_t>(start));
    }
    void add(int value) {
        sum_ = (sum_ + value * weight_) % code128::modulus;
        weight_ = (weight_ + 1) % code128::modulus;
        symbol_.push_back(static_cast<std::uint8_t>(value));
    }
    std::vector<std::uint8_t> finish() {
        symbol_.push_back(static_cast<std::uint8_t>(sum_ % code128::modulus));
        symbol_.push_back(static_cast<std::uint8_t>(code128::stop));
        return std::move(symbol_);
    }

  private:
    std::vector<std::uint8_t> symbol_;
    int sum_;
    // Kept below the modulus, so that no text is long enough to overflow it.
    int weight_ = 1;
};

}  // namespace

std::vector<std::uint8_t> encode_code128(base::TextView text) {
    CodeSet written = digits_ahead(text, 2) ? CodeSet::c : CodeSet::b;
    CodeSet current = written;
    SymbolWriter symbol(written == CodeSet::c ? code128::start_c : code128::start_b, text.size());
    while (!text.empty()) {
        if (digits_ahead(text, 4)) current = CodeSet::c;
        const bool pair = current == CodeSet::c && digits_ahead(text, 2);
        const base::TextView token = text.substr(0, pair ? 2 : 1);
        const int value = value_in_any(token, current);
        if (value >= 0) {
            current = set_for(token, value, current);
            if (current != written) symbol.add(switch_value(current));
            written = current;
            symbol.add(value);
        }
        const std::size_t taken = current == CodeSet::c ? 2 : 1;
        text.remove_prefix(taken < text.size() ? taken : text.size());
    }
    return symbol.finish();
}

base::Text code128_text(std::span<const std::uint8_t> symbol,
                        std::span<const char16_t, values> font_characters) {
    base::Text text;
    text.reserve(symbol.size());
    for (const std::uint8_t value : symbol) text += font_characters[value];
    return text;
}

base::Text code128_trimmed_text(std::span<const std::uint8_t> symbol,
                                std::span<const char16_t, values> font_characters) {
    base::Text text;
    text.reserve(symbol.size());
    for (const std::uint8_t value : symbol) {
        // The start character, which is no space, stays in front: only the end can need trimming.
        while (!text.empty() && text.back() == u' ') text.pop_back();
        text += font_characters[value];
    }
    return text;
}

std::array<char16_t, values> code128_font_characters(std::span<const char16_t, 256> ansi) {
    std::array<char16_t, values> characters{};
    for (int value = 0; value < values; ++value) {
        characters[static_cast<std::size_t>(value)] = ansi[code128_font_byte(value)];
    }
    return characters;
}

}  // namespace tavrix::barcode
