#include "sandbox/basics/json.h"

#include <array>
#include <stdexcept>
#include <vector>

#include "sandbox/basics/text.h"

namespace tavrix::sandbox {
namespace {

constexpr std::size_t deepest_nesting = 64;
/// Of one object: each new member is compared with those before it, because they keep their order.
/// No request of the interface has as many.
constexpr std::size_t most_members = 128;

/// Looks through a text before anything is made of it.
void check_shape(std::string_view text) {
    const auto refuse = [](const char* why) {
        throw Json::parse_error::create(101, 0, why, nullptr);
    };
    std::array<std::size_t, deepest_nesting + 1> members{};
    std::size_t depth = 0;
    bool in_string = false, escaped = false;
    for (const char c : text) {
        if (in_string) {
            if (escaped) {
                escaped = false;
            } else if (c == '\\') {
                escaped = true;
            } else if (c == '"') {
                in_string = false;
            }
        } else if (c == '"') {
            in_string = true;
        } else if (c == '[' || c == '{') {
            if (depth == deepest_nesting) refuse("nested too deeply");
            members[++depth] = 0;
        } else if (c == ':') {
            if (++members[depth] > most_members) refuse("too many members");
        } else if ((c == ']' || c == '}') && depth > 0) {
            --depth;
        }
    }
}

/// One step of a path: a member's name, an element's index, or every element.
struct Step {
    std::string member;
    std::optional<std::size_t> index;
    bool every = false;
};

std::vector<Step> parse_path(std::string_view path) {
    const auto refuse = [path] {
        throw std::invalid_argument("not a JSON path: " + std::string(path));
    };
    std::vector<Step> steps;
    std::size_t at = 0;
    while (at < path.size()) {
        if (path[at] == '[') {
            const std::size_t end = path.find(']', at);
            if (end == std::string_view::npos) refuse();
            const std::string_view inside = path.substr(at + 1, end - at - 1);
            if (inside == "*") {
                steps.push_back({.member = {}, .index = {}, .every = true});
            } else {
                const auto index = number_of<std::size_t>(inside);
                if (!index) refuse();
                steps.push_back({.member = {}, .index = index, .every = false});
            }
            at = end + 1;
        } else {
            if (path[at] == '.') ++at;
            const std::size_t end = std::min(path.find_first_of(".[", at), path.size());
            if (end == at) refuse();
            steps.push_back(
                {.member = std::string(path.substr(at, end - at)), .index = {}, .every = false});
            at = end;
        }
    }
    if (steps.empty()) refuse();
    return steps;
}

std::size_t change(Json& node, const std::vector<Step>& steps, std::size_t depth,
                   const Json* value) {
    const Step& step = steps[depth];
    const bool last = depth + 1 == steps.size();
    if (step.every || step.index) {
        if (!node.is_array()) return 0;
        const std::size_t from = step.every ? 0 : *step.index;
        const std::size_t to = step.every ? node.size() : std::min(from + 1, node.size());
        std::size_t changed = 0;
        for (std::size_t i = from; i < to; ++i) {
            if (!last) {
                changed += change(node[i], steps, depth + 1, value);
            } else if (value != nullptr) {
                node[i] = *value;
                ++changed;
            }
        }
        if (last && value == nullptr && from < to) {
            node.erase(node.begin() + std::ptrdiff_t(from), node.begin() + std::ptrdiff_t(to));
            changed = to - from;
        }
        return changed;
    }
    if (!node.is_object() && !(node.is_null() && value != nullptr)) return 0;
    if (value == nullptr) {
        const auto member = node.find(step.member);
        if (member == node.end()) return 0;
        if (!last) return change(*member, steps, depth + 1, nullptr);
        node.erase(member);
        return 1;
    }
    if (!last) return change(node[step.member], steps, depth + 1, value);
    node[step.member] = *value;
    return 1;
}

}  // namespace

std::string dump(const Json& value, int indent) {
    return value.dump(indent, ' ', false, Json::error_handler_t::replace);
}

Json parse_json(std::string_view text) {
    check_shape(text);
    return Json::parse(text);
}

std::optional<Json> read_json(std::string_view text) {
    try {
        return parse_json(text);
    } catch (const Json::exception&) {
        return std::nullopt;
    }
}

std::optional<std::int64_t> whole_number(const Json& value) {
    if (value.is_number_integer()) return value.get<std::int64_t>();
    if (value.is_string()) return number_of<std::int64_t>(value.get_ref<const std::string&>());
    return std::nullopt;
}

std::size_t set_at_path(Json& root, std::string_view path, const Json& value) {
    return change(root, parse_path(path), 0, &value);
}

std::size_t remove_at_path(Json& root, std::string_view path) {
    return change(root, parse_path(path), 0, nullptr);
}

void check_path(std::string_view path) {
    parse_path(path);
}

}  // namespace tavrix::sandbox
