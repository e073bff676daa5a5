#include "tests/barcode/measure.h"

#include <algorithm>
#include <map>
#include <vector>

#include "fonts/bar_patterns.h"

namespace tavrix::test {
namespace {

// GS1 General Specifications, figure 5.2.1.2: number set A by its modules, 1 for dark.
constexpr const char* set_a[] = {"0001101", "0011001", "0010011", "0111101", "0100011",
                                 "0110001", "0101111", "0111011", "0110111", "0001011"};
// Figure 5.2.1.3: the sets of the left half by the leading digit.
constexpr const char* parities[] = {"AAAAAA", "AABABB", "AABBAB", "AABBBA", "ABAABB",
                                    "ABBAAB", "ABBBAA", "ABABAB", "ABABBA", "ABBABA"};

std::string modules_of(const std::string& runs) {
    std::string modules;
    char module = '1';
    for (const char width : runs) {
        modules.append(static_cast<std::size_t>(width - '0'), module);
        module = module == '1' ? '0' : '1';
    }
    return modules;
}

struct EanDigit {
    char digit = '?';
    char set = '?';
};

EanDigit ean_digit(const std::string& modules) {
    std::string complement = modules;
    for (char& module : complement) module = module == '1' ? '0' : '1';
    const std::string backwards(complement.rbegin(), complement.rend());
    for (int digit = 0; digit < 10; ++digit) {
        const char name = static_cast<char>('0' + digit);
        if (modules == set_a[digit]) return {name, 'A'};
        if (backwards == set_a[digit]) return {name, 'B'};
        if (complement == set_a[digit]) return {name, 'C'};
    }
    return {};
}

bool has_check_digit(const std::string& digits) {
    int sum = 0;
    for (std::size_t i = 0; i < digits.size(); ++i) {
        sum += (digits[digits.size() - 1 - i] - '0') * (i % 2 == 0 ? 1 : 3);
    }
    return sum % 10 == 0;
}

}  // namespace

ScanLine measure(const drawing::Coverage& picture, std::int32_t y_px, std::int32_t module_px) {
    ScanLine line;
    std::vector<std::int32_t> widths;  // light first
    bool dark = false;
    widths.push_back(0);
    for (std::int32_t x = 0; x < picture.width_px; ++x) {
        const std::uint8_t pixel = picture.at(x, y_px);
        // A grey pixel is an edge that lies inside it.
        if (pixel != 0 && pixel != 255) return line;
        if ((pixel == 255) != dark) {
            dark = !dark;
            widths.push_back(0);
        }
        ++widths.back();
    }
    if (widths.size() < 3 || dark) return line;
    for (std::size_t i = 1; i + 1 < widths.size(); ++i) {
        if (widths[i] % module_px != 0 || widths[i] / module_px > 9) {
            line.runs.clear();
            return line;
        }
        line.runs += static_cast<char>('0' + widths[i] / module_px);
    }
    line.left_quiet_modules = static_cast<double>(widths.front()) / module_px;
    line.right_quiet_modules = static_cast<double>(widths.back()) / module_px;
    return line;
}

std::int32_t bar_height_px(const drawing::Coverage& picture, std::int32_t x_px) {
    std::int32_t y = 0;
    while (y < picture.height_px && picture.at(x_px, y) == 0) ++y;
    const std::int32_t top = y;
    while (y < picture.height_px && picture.at(x_px, y) != 0) ++y;
    return y - top;
}

std::string read_ean(const ScanLine& line) {
    const std::string modules = modules_of(line.runs);
    const bool is_13 = modules.size() == 95;
    if (!is_13 && modules.size() != 67) return "(no EAN)";
    const std::size_t half = is_13 ? 6 : 4;
    const double left_quiet = is_13 ? 11 : 7;
    if (line.left_quiet_modules < left_quiet || line.right_quiet_modules < 7) return "(quiet zone)";
    if (modules.substr(0, 3) != "101" || modules.substr(3 + 7 * half, 5) != "01010" ||
        modules.substr(modules.size() - 3) != "101") {
        return "(guards)";
    }
    std::string digits;
    std::string left_sets;
    for (std::size_t i = 0; i < 2 * half; ++i) {
        const EanDigit found = ean_digit(modules.substr(3 + 7 * i + (i < half ? 0 : 5), 7));
        digits += found.digit;
        if (i < half) left_sets += found.set;
        if (i >= half && found.set != 'C') return "(number set)";
    }
    if (is_13) {
        const auto* row = std::find(std::begin(parities), std::end(parities), left_sets);
        if (row == std::end(parities)) return "(parity)";
        digits.insert(digits.begin(), static_cast<char>('0' + (row - std::begin(parities))));
    } else if (left_sets != "AAAA") {
        return "(parity)";
    }
    return has_check_digit(digits) ? digits : "(check digit)";
}

std::string read_code128(const ScanLine& line) {
    if (line.left_quiet_modules < 10 || line.right_quiet_modules < 10) return "(quiet zone)";
    std::map<std::string_view, int> values;
    for (std::size_t i = 0; i < fonts::code128_patterns.size(); ++i) {
        values[fonts::code128_patterns[i]] = static_cast<int>(i);
    }
    if (line.runs.size() < 7 + 18 || line.runs.size() % 6 != 1) return "(no Code 128)";
    std::vector<int> symbol;
    for (std::size_t i = 0; i + 7 < line.runs.size(); i += 6) {
        const auto found = values.find(std::string_view(line.runs).substr(i, 6));
        if (found == values.end()) return "(bars)";
        symbol.push_back(found->second);
    }
    if (line.runs.substr(line.runs.size() - 7) != "2331112") return "(stop)";
    int sum = symbol.front();
    for (std::size_t i = 1; i + 1 < symbol.size(); ++i) sum += symbol[i] * static_cast<int>(i);
    if (sum % 103 != symbol.back()) return "(check character)";
    // The texts of these tests stay in sets B and C.
    std::string text;
    bool set_c = symbol.front() == 105;
    for (std::size_t i = 1; i + 1 < symbol.size(); ++i) {
        const int value = symbol[i];
        if (value == 99 && !set_c) {
            set_c = true;
        } else if (value == 100 && set_c) {
            set_c = false;
        } else if (set_c) {
            text += {static_cast<char>('0' + value / 10), static_cast<char>('0' + value % 10)};
        } else {
            text += static_cast<char>(value + 32);
        }
    }
    return text;
}

std::string read_code39(const ScanLine& line) {
    if (line.left_quiet_modules < 10 || line.right_quiet_modules < 10) return "(quiet zone)";
    // Nine runs and a gap each, but for the last gap.
    if (line.runs.size() % 10 != 9) return "(no Code 39)";
    std::string text;
    for (std::size_t i = 0; i < line.runs.size(); i += 10) {
        std::string wide;
        for (const char run : line.runs.substr(i, 9)) {
            if (run != '1' && run != '3') return "(ratio)";
            wide += run == '3' ? '1' : '0';
        }
        const auto* found =
            std::find_if(fonts::code39_patterns.begin(), fonts::code39_patterns.end(),
                         [&](const auto& pattern) { return pattern.wide == wide; });
        if (found == fonts::code39_patterns.end()) return "(bars)";
        text += static_cast<char>(found->character);
    }
    const bool framed = text.size() >= 2 && text.front() == '*' && text.back() == '*';
    return framed ? text.substr(1, text.size() - 2) : "(start or stop)";
}

}  // namespace tavrix::test
