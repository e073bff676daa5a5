#include "ksef/json.h"

#include <algorithm>
#include <charconv>
#include <optional>

#include "ksef/json_text.h"

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

// Where between its quotes the string at `path` stands; nothing when there is no string. Of members
// with the same name the last counts, as in the parser.
std::optional<std::string_view> string_at(std::string_view document, std::string_view path) {
    JsonScanner scanner(document);
    for (;;) {
        const std::size_t dot = path.find('.');
        const std::string_view name = path.substr(0, dot);
        std::optional<std::size_t> found;
        if (!scanner.take('{')) return std::nullopt;
        while (scanner.next() == '"') {
            const std::string_view key = scanner.read_string();
            if (!scanner.take(':')) break;
            if (key == name) found = scanner.position();
            scanner.read_value();
            if (!scanner.take(',')) break;
        }
        if (!found) return std::nullopt;
        scanner.go_to(*found);
        if (dot == std::string_view::npos) break;
        path.remove_prefix(dot + 1);
    }
    if (scanner.next() != '"') return std::nullopt;
    return scanner.read_string();
}

}  // namespace

// A document in memory takes up to twenty times its text, and the parser cannot survive running out
// of memory; the service's answers are kilobytes. UPOs and invoices are no JSON.
constexpr std::size_t longest_document = 4 << 20;

bool may_be_parsed(std::string_view body) {
    return body.size() <= longest_document && !nests_too_deep(body);
}

Json parse_json(std::string_view body) {
    if (!may_be_parsed(body)) return nullptr;
    Json document = Json::parse(body, nullptr, false);
    if (document.is_discarded()) return nullptr;
    return document;
}

SecretAnswer parse_secret_json(base::SecretUtf8& body,
                               std::initializer_list<std::string_view> paths) {
    std::vector<base::SecretUtf8> secrets;
    for (const std::string_view path : paths) {
        base::SecretUtf8& secret = secrets.emplace_back();
        const auto found = string_at(body.view(), path);
        // The parser reads, or refuses, what is no plain ASCII text; the service's tokens are.
        const auto is_plain = [](char c) { return c >= ' ' && c <= '~' && c != '\\'; };
        if (!found || !std::ranges::all_of(*found, is_plain)) continue;
        secret = base::SecretUtf8(*found);
        const std::size_t begin = static_cast<std::size_t>(found->data() - body.view().data());
        std::ranges::fill(body.units().subspan(begin, found->size()), ' ');
    }
    Json rest = parse_json(body.view());
    std::size_t i = 0;
    for (const std::string_view path : paths) {
        base::SecretUtf8& secret = secrets[i++];
        if (rest.is_null()) secret.clear();
        if (secret.empty()) secret = base::SecretUtf8(utf8_at(rest, path));
    }
    return {std::move(rest), std::move(secrets)};
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
