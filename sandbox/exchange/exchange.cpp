#include "sandbox/exchange/exchange.h"

#include <algorithm>

namespace tavrix::sandbox {
namespace {

int hex_digit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return -1;
}

char lower(char c) {
    return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c;
}

bool same_name(std::string_view left, std::string_view right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char a, char b) { return lower(a) == lower(b); });
}

std::string_view next_segment(std::string_view& rest) {
    const std::size_t slash = rest.find('/');
    const std::string_view segment = rest.substr(0, slash);
    rest = slash == std::string_view::npos ? std::string_view() : rest.substr(slash + 1);
    return segment;
}

}  // namespace

std::string_view to_string(BearerKind kind) {
    switch (kind) {
        case BearerKind::none:
            return "none";
        case BearerKind::authentication:
            return "authentication";
        case BearerKind::access:
            return "access";
        case BearerKind::refresh:
            return "refresh";
        case BearerKind::unknown:
            break;
    }
    return "unknown";
}

std::string_view Request::header(std::string_view name) const {
    for (const auto& [header_name, value] : headers)
        if (same_name(header_name, name)) return value;
    return {};
}

std::optional<std::string> Request::parameter(std::string_view query_name) const {
    for (const auto& [name, value] : query)
        if (name == query_name) return value;
    return std::nullopt;
}

std::vector<std::string> Request::parameters_named(std::string_view query_name) const {
    std::vector<std::string> values;
    for (const auto& [name, value] : query)
        if (name == query_name) values.push_back(value);
    return values;
}

Answer Answer::json(int status, const Json& body) {
    return {status, "application/json; charset=utf-8", dump(body), {}};
}

Answer Answer::xml(std::string body) {
    return {200, "application/xml", std::move(body), {}};
}

Answer Answer::html(std::string body) {
    return {200, "text/html; charset=utf-8", std::move(body), {}};
}

std::string percent_decode(std::string_view text, bool plus_is_space) {
    std::string result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%' && i + 2 < text.size() && hex_digit(text[i + 1]) >= 0 &&
            hex_digit(text[i + 2]) >= 0) {
            result += char(hex_digit(text[i + 1]) * 16 + hex_digit(text[i + 2]));
            i += 2;
        } else {
            result += plus_is_space && text[i] == '+' ? ' ' : text[i];
        }
    }
    return result;
}

std::string percent_encode(std::string_view text) {
    constexpr std::string_view unreserved =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~";
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string result;
    for (const char c : text) {
        if (unreserved.find(c) != std::string_view::npos) {
            result += c;
        } else {
            const auto byte = static_cast<unsigned char>(c);
            result += '%';
            result += digits[byte >> 4];
            result += digits[byte & 15];
        }
    }
    return result;
}

bool match_path(std::string_view pattern, std::string_view path,
                std::vector<std::string>& parameters) {
    parameters.clear();
    for (;;) {
        const bool last_pattern = pattern.find('/') == std::string_view::npos;
        const bool last_path = path.find('/') == std::string_view::npos;
        const std::string_view wanted = next_segment(pattern), segment = next_segment(path);
        if (wanted == "{}") {
            if (segment.empty()) return false;
            parameters.push_back(percent_decode(segment));
        } else if (wanted != segment) {
            return false;
        }
        if (last_pattern || last_path) return last_pattern == last_path;
    }
}

}  // namespace tavrix::sandbox
