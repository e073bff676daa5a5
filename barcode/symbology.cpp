#include "barcode/symbology.h"

#include <algorithm>
#include <array>

#include "barcode/code128.h"
#include "barcode/code39.h"
#include "barcode/ean.h"
#include "base/windows_1250.h"

namespace tavrix::barcode {
namespace {

constexpr base::TextView empty_text = u"pusty tekst";
constexpr base::TextView wrong_check_digit = u"błędna cyfra kontrolna";

using EncodeDigits = base::Text (*)(base::TextView);

Encoded encode_ean(base::TextView text, std::size_t data_digits, EncodeDigits encode,
                   base::TextView wrong_digits) {
    const std::size_t plus = text.find(u'+');
    const base::TextView digits = text.substr(0, plus);
    const base::TextView data = digits.substr(0, std::min(data_digits, digits.size()));
    Encoded encoded{encode(data), {}};
    if (encoded.symbol.empty() || digits.size() > data_digits + 1) return {{}, wrong_digits};
    if (digits.size() > data_digits && digits.back() != gs1_check_digit(data)) {
        return {{}, wrong_check_digit};
    }
    if (plus != base::TextView::npos) {
        const base::Text add_on = encode_add_on(text.substr(plus + 1));
        if (add_on.empty()) return {{}, u"dodatek ma 2 albo 5 cyfr"};
        encoded.symbol += add_on;
    }
    return encoded;
}

Encoded encode_as_ean8(base::TextView text) {
    return encode_ean(text, 7, &encode_ean8, u"EAN-8 ma 7 albo 8 cyfr");
}

Encoded encode_as_ean13(base::TextView text) {
    return encode_ean(text, 12, &encode_ean13, u"EAN-13 ma 12 albo 13 cyfr");
}

bool is_ascii(base::TextView text) noexcept {
    return std::all_of(text.begin(), text.end(), [](char16_t each) { return each < 128; });
}

Encoded encode_as_code128(base::TextView text) {
    static const auto characters = code128_font_characters(base::windows_1250);
    if (text.empty()) return {{}, empty_text};
    if (!is_ascii(text)) return {{}, u"Code 128 ma tylko znaki ASCII"};
    return {code128_text(encode_code128(text), characters), {}};
}

Encoded encode_as_code39(base::TextView text) {
    constexpr base::TextView characters = u"0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ-. $/+%";
    if (text.empty()) return {{}, empty_text};
    if (text.find_first_not_of(characters) != base::TextView::npos) {
        return {{}, u"Code 39 ma tylko cyfry, wielkie litery i znaki - . $ / + % oraz spację"};
    }
    return {wrap_code39(text), {}};
}

Encoded encode_as_code39_extended(base::TextView text) {
    if (text.empty()) return {{}, empty_text};
    if (!is_ascii(text) || text.find(u'*') != base::TextView::npos) {
        return {{}, u"rozszerzony Code 39 ma tylko znaki ASCII bez gwiazdki"};
    }
    return {wrap_code39(text), {}};
}

using fonts::linear_quiet_modules;

constexpr std::array table = {
    Symbology{Kind::ean8, u"EAN8", u"EAN-8", u"7 cyfr albo 8 z kontrolną, dodatek po +",
              u"Drk_Wyd_Ean_cls813.RysujEAN", &fonts::ean13, &encode_as_ean8, 0, 48, 0},
    Symbology{Kind::ean13, u"EAN13", u"EAN-13", u"12 cyfr albo 13 z kontrolną, dodatek po +",
              u"Drk_Wyd_Ean_cls813.RysujEAN", &fonts::ean13, &encode_as_ean13, 0, 48, 0},
    Symbology{Kind::code128, u"EAN128", u"Code 128", u"znaki ASCII", u"Drk_Wyd_Ean_cls128.RysujEAN",
              &fonts::code128, &encode_as_code128, 0, 42, 14},
    Symbology{Kind::code39, u"EAN39", u"Code 39", u"cyfry, wielkie litery i - . $ / + % spacja",
              u"Drk_Wyd_Ean_cls.RysujEAN39", &fonts::code39, &encode_as_code39,
              linear_quiet_modules, 48, 13},
    Symbology{Kind::code39_extended, u"EAN39EX", u"Code 39, full ASCII", u"znaki ASCII bez *",
              u"Drk_Wyd_Ean_cls.RysujEAN39ex", &fonts::code39_extended, &encode_as_code39_extended,
              linear_quiet_modules, 48, 13},
    Symbology{Kind::qr, u"QR", u"QR", u"do 2953 bajtów UTF-8", u"Drk_Wyd_Ean_cls.RysujEAN", nullptr,
              nullptr, 0, 42, 14},
};

constexpr bool is_in_order() {
    for (std::size_t i = 0; i < table.size(); ++i) {
        if (static_cast<std::size_t>(table[i].kind) != i) return false;
    }
    return true;
}
static_assert(is_in_order());

}  // namespace

std::span<const Symbology> symbologies() noexcept {
    return table;
}

const Symbology& symbology_of(Kind kind) noexcept {
    return table[static_cast<std::size_t>(kind)];
}

const Symbology* find_symbology(base::TextView name) noexcept {
    const auto* found = std::find_if(table.begin(), table.end(),
                                     [&](const Symbology& row) { return row.name == name; });
    return found == table.end() ? nullptr : found;
}

}  // namespace tavrix::barcode
