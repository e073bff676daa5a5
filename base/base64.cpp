#include "base/base64.h"

#include <array>

namespace tavrix::base {
namespace {

constexpr std::string_view alphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

constexpr std::uint8_t invalid = 0xFF;
constexpr std::uint8_t space = 0xFE;
constexpr std::uint8_t padding = 0xFD;

constexpr std::array<std::uint8_t, 256> reverse = [] {
    std::array<std::uint8_t, 256> table{};
    table.fill(invalid);
    for (std::size_t i = 0; i < alphabet.size(); ++i) {
        table[static_cast<std::uint8_t>(alphabet[i])] = static_cast<std::uint8_t>(i);
    }
    for (const char c : {' ', '\t', '\r', '\n'}) table[static_cast<std::uint8_t>(c)] = space;
    table[static_cast<std::uint8_t>('=')] = padding;
    return table;
}();

}  // namespace

std::string base64_encode(ByteView bytes) {
    std::string out((bytes.size() + 2) / 3 * 4, '=');
    std::size_t o = 0;
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const std::size_t have = std::min<std::size_t>(3, bytes.size() - i);
        std::uint32_t group = std::uint32_t{bytes[i]} << 16;
        if (have > 1) group |= std::uint32_t{bytes[i + 1]} << 8;
        if (have > 2) group |= bytes[i + 2];
        for (std::size_t k = 0; k <= have; ++k)
            out[o + k] = alphabet[(group >> (18 - 6 * k)) & 0x3F];
        o += 4;
    }
    return out;
}

std::optional<Bytes> base64_decode(std::string_view text) {
    Bytes out;
    out.reserve(text.size() / 4 * 3);
    std::uint32_t group = 0;
    int digits = 0;
    int pads = 0;
    for (const char c : text) {
        const std::uint8_t value = reverse[static_cast<std::uint8_t>(c)];
        if (value == space) continue;
        if (value == invalid) return std::nullopt;
        if (value == padding) {
            if (digits + ++pads > 4 || digits < 2) return std::nullopt;
            continue;
        }
        if (pads > 0) return std::nullopt;
        group = (group << 6) | value;
        if (++digits == 4) {
            out.push_back(static_cast<std::uint8_t>(group >> 16));
            out.push_back(static_cast<std::uint8_t>(group >> 8));
            out.push_back(static_cast<std::uint8_t>(group));
            group = 0;
            digits = 0;
        }
    }
    if (digits == 0) return pads == 0 ? std::optional(std::move(out)) : std::nullopt;
    if (digits + pads != 4) return std::nullopt;
    group <<= 6 * (4 - digits);
    const std::uint32_t leftover = digits == 2 ? group & 0xFFFF : group & 0xFF;
    if (leftover != 0) return std::nullopt;
    out.push_back(static_cast<std::uint8_t>(group >> 16));
    if (digits == 3) out.push_back(static_cast<std::uint8_t>(group >> 8));
    return out;
}

}  // namespace tavrix::base
