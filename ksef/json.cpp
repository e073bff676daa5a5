#include "ksef/json.h"

#include <charconv>

namespace tavrix::ksef {
namespace {

constexpr int deepest_nesting = 64;

// Counts brackets outside strings. Replies of the service nest less than ten levels; a hostile one
// would exhaust a host's small stack.
bool nests_too_deep(std::string_view body) {
    int depth = 0;
    bool in_string = false;
    for (std::size_t i = 0; i < body.size(); ++i) {
        const char c = body[i];
        if (in_string) {
            if (c == '\\') ++i;
            if (c == '"') in_string = false;
        } else if (c == '"') {
            in_string = true;
        } else if (c == '[' || c == '{') {
            if (++depth > deepest_nesting) return true;
        } else if (c == ']' || c == '}') {
            --depth;
        }
    }
    return false;
}

const Json& nothing() {
    static const Json null;
    return null;
}

// One piece of a path: a member's name and the indexes behind it.
const Json& step(const Json& from, std::string_view piece) {
    const std::size_t bracket = piece.find('[');
    const std::string_view name = piece.substr(0, bracket);
    const Json* here = &from;
    if (!name.empty()) {
        if (!here->is_object()) return nothing();
        const auto member = here->find(std::string(name));
        if (member == here->end()) return nothing();
        here = &*member;
    }
    std::size_t at = bracket;
    while (at != std::string_view::npos && at < piece.size()) {
        std::size_t index = 0;
        std::from_chars(piece.data() + at + 1, piece.data() + piece.size(), index);
        if (!here->is_array() || index >= here->size()) return nothing();
        here = &(*here)[index];
        at = piece.find('[', at + 1);
    }
    return *here;
}

}  // namespace

Json parse_json(std::string_view body) {
    if (nests_too_deep(body)) return nullptr;
    Json document = Json::parse(body, nullptr, false);
    return document.is_discarded() ? Json(nullptr) : document;
}

const Json& json_at(const Json& document, std::string_view path) {
    const Json* here = &document;
    while (!path.empty()) {
        const std::size_t dot = path.find('.');
        here = &step(*here, path.substr(0, dot));
        path = dot == std::string_view::npos ? std::string_view{} : path.substr(dot + 1);
    }
    return *here;
}

std::string utf8_at(const Json& document, std::string_view path) {
    const Json& value = json_at(document, path);
    if (value.is_null()) return {};
    if (value.is_string()) return value.get<std::string>();
    return value.dump();
}

base::Text text_at(const Json& document, std::string_view path) {
    return base::from_utf8(utf8_at(document, path));
}

}  // namespace tavrix::ksef
