#include "ksef/json.h"

#include <algorithm>
#include <charconv>
#include <optional>

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

/// Finds its way through the text of a JSON document without copying any of it. What it makes of
/// text that is no JSON does not matter, as long as it comes to an end.
class JsonText {
  public:
    explicit JsonText(std::string_view text) : text_(text) {}

    /// Where between its quotes the string at `path` stands; nothing when there is no string.
    std::optional<std::string_view> string_at(std::string_view path) {
        at_ = 0;
        for (;;) {
            const std::size_t dot = path.find('.');
            if (!go_to_member(path.substr(0, dot))) return std::nullopt;
            if (dot == std::string_view::npos) break;
            path.remove_prefix(dot + 1);
        }
        if (next() != '"') return std::nullopt;
        return read_string();
    }

  private:
    char next() {
        at_ = std::min(text_.find_first_not_of(" \t\r\n", at_), text_.size());
        return at_ < text_.size() ? text_[at_] : '\0';
    }

    bool take(char expected) {
        if (next() != expected) return false;
        ++at_;
        return true;
    }

    std::string_view read_string() {
        const std::size_t begin = ++at_;
        while (at_ < text_.size() && text_[at_] != '"') at_ += text_[at_] == '\\' ? 2 : 1;
        const std::size_t end = std::min(at_, text_.size());
        at_ = std::min(end + 1, text_.size());
        return text_.substr(begin, end - begin);
    }

    void skip_value() {
        int depth = 0;
        do {
            const char c = next();
            if (c == '"') {
                read_string();
                continue;
            }
            if (depth == 0 && (c == ',' || c == '}')) return;
            if (c == '{' || c == '[') ++depth;
            if (c == '}' || c == ']') --depth;
            ++at_;
        } while (at_ < text_.size() && (depth > 0 || (next() != ',' && next() != '}')));
    }

    // To the value of the member of the object that begins here; the last of that name counts, as
    // in the parser.
    bool go_to_member(std::string_view name) {
        std::optional<std::size_t> found;
        if (!take('{')) return false;
        while (next() == '"') {
            const std::string_view key = read_string();
            if (!take(':')) break;
            if (key == name) found = at_;
            skip_value();
            if (!take(',')) break;
        }
        if (found) at_ = *found;
        return found.has_value();
    }

    std::string_view text_;
    std::size_t at_ = 0;
};

}  // namespace

// A document in memory takes up to twenty times its text, and the parser cannot survive running out
// of memory; the service's answers are kilobytes. UPOs and invoices are no JSON.
constexpr std::size_t longest_document = 4 << 20;

Json parse_json(std::string_view body) {
    if (body.size() > longest_document || nests_too_deep(body)) return nullptr;
    Json document = Json::parse(body, nullptr, false);
    if (document.is_discarded()) return nullptr;
    return document;
}

SecretAnswer parse_secret_json(base::SecretUtf8& body,
                               std::initializer_list<std::string_view> paths) {
    std::vector<base::SecretUtf8> secrets;
    for (const std::string_view path : paths) {
        base::SecretUtf8& secret = secrets.emplace_back();
        const auto found = JsonText(body.view()).string_at(path);
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
