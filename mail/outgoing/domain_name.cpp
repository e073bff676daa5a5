#include "mail/outgoing/domain_name.h"

#include <algorithm>

namespace tavrix::mail::outgoing {
namespace {

// RFC 3492, section 5.
constexpr std::uint32_t base_digits = 36;
constexpr std::uint32_t least_threshold = 1;
constexpr std::uint32_t most_threshold = 26;
constexpr std::uint32_t skew = 38;
constexpr std::uint32_t damp = 700;
constexpr std::uint32_t first_bias = 72;
constexpr std::uint32_t first_beyond_ascii = 0x80;
// RFC 1035, section 2.3.4.
constexpr std::size_t longest_label = 63;
constexpr std::size_t longest_domain = 253;

char digit(std::uint32_t value) {
    return static_cast<char>(value < 26 ? 'a' + value : '0' + (value - 26));
}

// RFC 3492, section 6.1.
std::uint32_t adapted_bias(std::uint32_t delta, std::uint32_t points, bool first_time) {
    delta = first_time ? delta / damp : delta / 2;
    delta += delta / points;
    std::uint32_t k = 0;
    while (delta > (base_digits - least_threshold) * most_threshold / 2) {
        delta /= base_digits - least_threshold;
        k += base_digits;
    }
    return k + (base_digits - least_threshold + 1) * delta / (delta + skew);
}

void append_number(std::string& out, std::uint32_t number, std::uint32_t bias) {
    for (std::uint32_t k = base_digits;; k += base_digits) {
        const std::uint32_t threshold =
            k <= bias ? least_threshold : std::clamp(k - bias, least_threshold, most_threshold);
        if (number < threshold) break;
        const std::uint32_t rest = base_digits - threshold;
        out += digit(threshold + (number - threshold) % rest);
        number = (number - threshold) / rest;
    }
    out += digit(number);
}

// RFC 3492, section 6.3. A label is short, so no number can overflow.
std::string punycode(std::u32string_view label) {
    std::string out;
    for (const char32_t point : label) {
        if (point < first_beyond_ascii) out += static_cast<char>(point);
    }
    auto handled = static_cast<std::uint32_t>(out.size());
    const std::uint32_t basic = handled;
    if (basic > 0) out += '-';
    std::uint32_t reached = first_beyond_ascii;
    std::uint32_t delta = 0;
    std::uint32_t bias = first_bias;
    while (handled < label.size()) {
        char32_t next = 0x10FFFF;
        for (const char32_t point : label) {
            if (point >= reached) next = std::min(next, point);
        }
        delta += (next - reached) * (handled + 1);
        reached = next;
        for (const char32_t point : label) {
            if (point < reached) ++delta;
            if (point != reached) continue;
            append_number(out, delta, bias);
            bias = adapted_bias(delta, handled + 1, handled == basic);
            delta = 0;
            ++handled;
        }
        ++delta;
        ++reached;
    }
    return out;
}

std::u32string code_points(base::TextView text) {
    std::u32string points;
    for (std::size_t i = 0; i < text.size(); ++i) {
        char32_t point = base::lower(text[i]);
        if (point >= 0xD800 && point <= 0xDBFF && i + 1 < text.size()) {
            point = 0x10000 + ((point - 0xD800) << 10) + (text[++i] - 0xDC00u);
        }
        points += point;
    }
    return points;
}

bool is_ascii_label(base::TextView label) {
    return std::ranges::all_of(label, [](char16_t c) {
        return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || (c >= u'0' && c <= u'9') ||
               c == u'-' || c == u'_';
    });
}

// Empty for what is none.
std::string label_for_servers(base::TextView label) {
    if (label.empty() || label.size() > longest_label) return {};
    std::string name;
    if (is_ascii_label(label)) {
        name = base::to_utf8(label);
    } else {
        const bool is_letters = std::ranges::all_of(label, [](char16_t c) {
            return c > 0x9F ? c != 0xA0 && (c < 0xD800 || c > 0xDFFF) : is_ascii_label({&c, 1});
        });
        if (is_letters) name = "xn--" + punycode(code_points(label));
    }
    return name.size() > longest_label ? std::string() : name;
}

bool is_address_literal(base::TextView domain) {
    return domain.size() > 2 && domain.front() == u'[' && domain.back() == u']' &&
           std::ranges::all_of(domain.substr(1, domain.size() - 2), [](char16_t c) {
               return c == u'.' || c == u':' || is_ascii_label({&c, 1});
           });
}

}  // namespace

std::string domain_for_servers(base::TextView domain) {
    if (is_address_literal(domain)) return base::to_utf8(domain);
    std::string name;
    for (const base::Text& label : base::split(domain, u'.')) {
        const std::string known = label_for_servers(label);
        if (known.empty()) return {};
        if (!name.empty()) name += '.';
        name += known;
        if (name.size() > longest_domain) return {};
    }
    return name;
}

}  // namespace tavrix::mail::outgoing
