#include "ksef/json_text.h"

#include <algorithm>

#include "ksef/json.h"

namespace tavrix::ksef {

char JsonScanner::next() {
    at_ = std::min(text_.find_first_not_of(" \t\r\n", at_), text_.size());
    return at_ < text_.size() ? text_[at_] : '\0';
}

bool JsonScanner::take(char expected) {
    if (next() != expected) return false;
    ++at_;
    return true;
}

std::string_view JsonScanner::read_string() {
    const std::size_t begin = ++at_;
    while (at_ < text_.size() && text_[at_] != '"') at_ += text_[at_] == '\\' ? 2 : 1;
    const std::size_t end = std::min(at_, text_.size());
    at_ = std::min(end + 1, text_.size());
    return text_.substr(begin, end - begin);
}

std::string_view JsonScanner::read_value() {
    next();
    const std::size_t begin = at_;
    std::size_t end = begin;
    int depth = 0;
    while (at_ < text_.size()) {
        const char c = next();
        if (depth == 0 && (c == ',' || c == '}' || c == ']')) break;
        if (c == '"') {
            read_string();
        } else if (at_ < text_.size()) {
            if (c == '{' || c == '[') ++depth;
            if (c == '}' || c == ']') --depth;
            ++at_;
        }
        end = at_;
        if (depth == 0 && (c == '"' || c == '}' || c == ']')) break;
    }
    return text_.substr(begin, end - begin);
}

std::optional<JsonPiece> JsonPiece::document(std::string_view body) {
    if (!may_be_parsed(body) || !Json::accept(body)) return std::nullopt;
    // The parser passes over a byte order mark.
    if (body.starts_with("\xEF\xBB\xBF")) body.remove_prefix(3);
    return JsonPiece(JsonScanner(body).read_value());
}

// `visit` is given the name, undecoded and "" in an array, and the value.
template <typename Visit>
void JsonPiece::for_each(Visit visit) const {
    JsonScanner scanner(text_);
    const bool is_object = scanner.take('{');
    if (!is_object && !scanner.take('[')) return;
    while (scanner.next() != '}' && scanner.next() != ']' && scanner.next() != '\0') {
        const std::string_view name = is_object ? scanner.read_string() : std::string_view();
        if (is_object) scanner.take(':');
        visit(name, JsonPiece(scanner.read_value()));
        if (!scanner.take(',')) return;
    }
}

std::vector<JsonPiece> JsonPiece::values() const {
    std::vector<JsonPiece> values;
    for_each([&](std::string_view, const JsonPiece& value) { values.push_back(value); });
    return values;
}

std::optional<JsonPiece> JsonPiece::member(std::string_view name) const {
    std::optional<JsonPiece> found;
    for_each([&](std::string_view key, const JsonPiece& value) {
        if (key == name) found = value;
    });
    return found;
}

std::string JsonPiece::utf8() const {
    if (is_null()) return {};
    if (!text_.starts_with('"')) return std::string(text_);
    return Json::parse(text_).get<std::string>();
}

}  // namespace tavrix::ksef
