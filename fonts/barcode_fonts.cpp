#include "fonts/barcode_fonts.h"

#include <algorithm>
#include <cmath>

#include "base/windows_1250.h"
#include "fonts/bar_patterns.h"
#include "fonts/strokes.h"

namespace tavrix::fonts {
namespace {

/// The vertical extent of bars, in modules from the baseline.
struct Extent {
    std::int32_t bottom;
    std::int32_t top;
};

/// Draws runs of modules from left to right.
class BarWriter {
  public:
    explicit BarWriter(Extent extent) : extent_(extent) {}

    void space(std::int32_t modules) { glyph_.advance += modules * module_units; }
    void bar(std::int32_t modules) {
        const std::int32_t left = glyph_.advance;
        space(modules);
        const std::int32_t top = extent_.top * module_units;
        const std::int32_t bottom = extent_.bottom * module_units;
        glyph_.contours.push_back(
            {{left, bottom}, {left, top}, {glyph_.advance, top}, {glyph_.advance, bottom}});
    }
    void runs(std::string_view widths, bool begins_with_bar) {
        bool is_bar = begins_with_bar;
        for (const char width : widths) {
            is_bar ? bar(width - '0') : space(width - '0');
            is_bar = !is_bar;
        }
    }
    Glyph& glyph() noexcept { return glyph_; }
    Glyph finish() { return std::move(glyph_); }

  private:
    Extent extent_;
    Glyph glyph_;
};

Font make_font(const BarcodeFont& names, std::int32_t em_modules, Extent bars,
               std::int32_t descent_modules) {
    Font font;
    font.family = names.family;
    font.units_per_em = em_modules * module_units;
    font.ascent = bars.top * module_units;
    font.descent = descent_modules * module_units;
    // A character that the font lacks leaves a gap, which no scanner takes for a bar.
    font.add({11 * module_units, {}}, u"");
    return font;
}

// EAN: digits of eight modules stand on the baseline under the bars.
constexpr Extent ean_bars = {9, 64};
constexpr Extent ean_guards = {4, 64};
constexpr Extent add_on_bars = {4, 54};
constexpr std::int32_t digit_height_modules = 8;
constexpr std::int32_t digit_cell_modules = 7;

void add_digit(Glyph& glyph, std::size_t digit, std::int32_t left_modules,
               std::int32_t bottom_modules) {
    constexpr double height_scale =
        static_cast<double>(digit_height_modules * module_units) / capital_height;
    // Narrower than tall, so that digits leave a module between them.
    constexpr double width_scale = height_scale * 0.82;
    constexpr double pen = 0.95 * module_units;
    constexpr double bearing_modules = 1.1;
    add_strokes(
        glyph, base::Text(1, static_cast<char16_t>(u'0' + digit)),
        {(left_modules + bearing_modules) * module_units,
         static_cast<double>(bottom_modules * module_units), width_scale, height_scale, pen});
}

enum class NumberSet { a, b, c };

Glyph ean_digit(std::size_t digit, NumberSet set, Extent bars, std::int32_t digit_bottom_modules) {
    BarWriter writer(bars);
    std::string widths(ean_patterns[digit]);
    if (set == NumberSet::b) widths.assign(widths.rbegin(), widths.rend());
    writer.runs(widths, set == NumberSet::c);
    add_digit(writer.glyph(), digit, 0, digit_bottom_modules);
    return writer.finish();
}

// The digit in front of the symbol, in the quiet zone, and the start guard.
Glyph leading_digit(std::size_t digit) {
    BarWriter writer(ean_guards);
    writer.space(ean13_left_quiet_modules);
    writer.runs("111", true);
    add_digit(writer.glyph(), digit, 1, 0);
    return writer.finish();
}

Glyph guard(std::int32_t left_quiet, std::string_view runs, bool begins_with_bar,
            std::int32_t right_quiet, Extent bars) {
    BarWriter writer(bars);
    writer.space(left_quiet);
    writer.runs(runs, begins_with_bar);
    writer.space(right_quiet);
    return writer.finish();
}

base::Text character(char16_t first, std::size_t offset) {
    return base::Text(1, static_cast<char16_t>(first + offset));
}

// An add-on has its digits above the bars. Its characters are those of the symbol, so the ones
// behind its start and its separators take other forms where a program asks the font for them.
void add_add_on(Font& font, const std::array<GlyphId, 10>& set_a,
                const std::array<GlyphId, 10>& set_b) {
    constexpr std::int32_t gap_modules = 2;  // makes nine with the symbol's own quiet zone
    constexpr std::int32_t above_modules = add_on_bars.top + 1;
    font.triggers.push_back(font.add(guard(gap_modules, "112", true, 0, add_on_bars), u"["));
    font.triggers.push_back(font.add(guard(0, "11", false, 0, add_on_bars), u"\\"));
    for (std::size_t digit = 0; digit < 10; ++digit) {
        font.alternates[set_a[digit]] =
            font.add(ean_digit(digit, NumberSet::a, add_on_bars, above_modules), u"");
        font.alternates[set_b[digit]] =
            font.add(ean_digit(digit, NumberSet::b, add_on_bars, above_modules), u"");
    }
}

Font make_ean13_font() {
    Font font = make_font(ean13, 64, ean_bars, 2);
    std::array<GlyphId, 10> set_a{};
    std::array<GlyphId, 10> set_b{};
    for (std::size_t digit = 0; digit < 10; ++digit) {
        font.add(leading_digit(digit), character(u'0', digit));
        set_a[digit] =
            font.add(ean_digit(digit, NumberSet::a, ean_bars, 0), character(u'A', digit));
        set_b[digit] =
            font.add(ean_digit(digit, NumberSet::b, ean_bars, 0), character(u'K', digit));
        font.add(ean_digit(digit, NumberSet::c, ean_bars, 0), character(u'a', digit));
    }
    font.add(guard(ean_quiet_modules, "111", true, 0, ean_guards), u":");
    font.add(guard(0, "11111", false, 0, ean_guards), u"*");
    font.add(guard(0, "111", true, ean_quiet_modules, ean_guards), u"+");
    add_add_on(font, set_a, set_b);
    return font;
}

// A host prints the byte of a value, or the character that some code page has for it: the Polish
// one, or Latin-1, in which byte and character are the same number.
base::Text code128_codes(std::size_t value) {
    const std::size_t byte = value < 95 ? value + 32 : value + 100;
    base::Text codes(1, base::windows_1250[byte]);
    if (codes[0] != byte) codes += static_cast<char16_t>(byte);
    return codes;
}

Font make_code128_font() {
    constexpr Extent bars = {0, 44};
    Font font = make_font(code128, 56, bars, 2);
    for (std::size_t value = 0; value < code128_patterns.size(); ++value) {
        const bool is_start = value >= 103 && value <= 105;
        const bool is_stop = value == 106;
        font.add(guard(is_start ? linear_quiet_modules : 0, code128_patterns[value], true,
                       is_stop ? linear_quiet_modules : 0, bars),
                 code128_codes(value));
    }
    return font;
}

constexpr Extent code39_bars = {0, 48};

void write_code39(BarWriter& writer, char16_t character) {
    for (const Code39Pattern& pattern : code39_patterns) {
        if (pattern.character != character) continue;
        std::string widths;
        for (const char wide : pattern.wide) widths += wide == '1' ? '3' : '1';
        writer.runs(widths, true);
        constexpr std::int32_t gap_modules = 1;
        writer.space(gap_modules);
    }
}

Glyph code39_glyph(base::TextView characters) {
    BarWriter writer(code39_bars);
    for (const char16_t each : characters) write_code39(writer, each);
    return writer.finish();
}

Font make_code39_font() {
    Font font = make_font(code39, 64, code39_bars, 2);
    for (const Code39Pattern& pattern : code39_patterns) {
        const char16_t own = pattern.character;
        base::Text codes(1, own);
        // Code 39 has no small letters; a host's text in them means the capitals.
        if (own >= u'A' && own <= u'Z') codes += static_cast<char16_t>(own + 32);
        font.add(code39_glyph({&own, 1}), codes);
    }
    return font;
}

// ISO/IEC 16388: 2007, annex A: what stands for an ASCII character.
base::Text full_ascii(char16_t own) {
    const auto pair = [&](char16_t shift, char16_t from) {
        return base::Text{shift, static_cast<char16_t>(u'A' + (own - from))};
    };
    if (own == 0) return u"%U";
    if (own <= 26) return pair(u'$', 1);
    if (own <= 31) return pair(u'%', 27);
    if (own == u' ' || own == u'-' || own == u'.' || own == u'*') return {own};
    if (own >= u'0' && own <= u'9') return {own};
    if (own >= u'A' && own <= u'Z') return {own};
    if (own < u'0') return pair(u'/', u'!');
    if (own == u':') return u"/Z";
    if (own < u'@') return base::Text{u'%', static_cast<char16_t>(u'F' + (own - u';'))};
    if (own == u'@') return u"%V";
    if (own == u'`') return u"%W";
    if (own < u'a') return base::Text{u'%', static_cast<char16_t>(u'K' + (own - u'['))};
    if (own <= u'z') return pair(u'+', u'a');
    return base::Text{u'%', static_cast<char16_t>(u'P' + (own - u'{'))};
}

Font make_code39_extended_font() {
    Font font = make_font(code39_extended, 64, code39_bars, 2);
    for (char16_t own = 0; own < 128; ++own) font.add(code39_glyph(full_ascii(own)), {&own, 1});
    return font;
}

}  // namespace

const Font& ean13_font() {
    static const Font font = make_ean13_font();
    return font;
}

const Font& code128_font() {
    static const Font font = make_code128_font();
    return font;
}

const Font& code39_font() {
    static const Font font = make_code39_font();
    return font;
}

const Font& code39_extended_font() {
    static const Font font = make_code39_extended_font();
    return font;
}

double readable_em_px(const Font& font, double em_px) noexcept {
    const double em_modules = static_cast<double>(font.units_per_em) / module_units;
    return std::max(std::round(em_px / em_modules), 1.0) * em_modules;
}

const Font* find_barcode_font(base::TextView family) noexcept {
    for (const BarcodeFont* font : barcode_fonts) {
        if (base::equal_case_blind(font->family, family)) return &font->glyphs();
    }
    return nullptr;
}

}  // namespace tavrix::fonts
