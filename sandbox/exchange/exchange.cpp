#include "sandbox/exchange/exchange.h"

#include "sandbox/basics/text.h"

namespace tavrix::sandbox {
namespace {

std::string_view next_segment(std::string_view& rest) {
    const std::size_t slash = rest.find('/');
    const std::string_view segment = rest.substr(0, slash);
    rest = slash == std::string_view::npos ? std::string_view() : rest.substr(slash + 1);
    return segment;
}

}  // namespace

std::string_view to_string(BearerKind kind) {
    constexpr std::string_view names[] = {"none", "unknown", "authentication", "access", "refresh"};
    return names[int(kind)];
}

std::string_view Request::header(std::string_view name) const {
    const std::string wanted = lower(std::string(name));
    for (const auto& [header_name, value] : headers)
        if (lower(header_name) == wanted) return value;
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
    return {200, "application/xml; charset=utf-8", std::move(body), {}};
}

Answer Answer::html(std::string body) {
    return {200, "text/html; charset=utf-8", std::move(body), {}};
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
