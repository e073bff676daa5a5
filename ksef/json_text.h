#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/text.h"

namespace tavrix::ksef {

/// A value where it stands in the text of a JSON document: for what is read by the position of its
/// members, and for numbers whose digits count. Nothing is copied, and only what is asked for is
/// looked through; valid as long as the document's text.
class JsonPiece {
  public:
    /// A whole document; nothing when `body` is no JSON, or one that parse_json would refuse.
    static std::optional<JsonPiece> document(std::string_view body);

    bool is_array() const { return text_.starts_with('['); }
    bool is_null() const { return text_ == "null"; }
    /// The elements of an array, the values of an object's members in the order in which they
    /// stand; none for anything else.
    std::vector<JsonPiece> values() const;
    /// The last member of that name; nothing when there is none.
    std::optional<JsonPiece> member(std::string_view name) const;
    /// As it stands there.
    std::string_view json() const { return text_; }
    /// A text decoded, a number or boolean as it stands there, null "", the rest as JSON.
    std::string utf8() const;
    base::Text text() const { return base::from_utf8(utf8()); }

  private:
    explicit JsonPiece(std::string_view text) : text_(text) {}
    template <typename Visit>
    void for_each(Visit visit) const;

    std::string_view text_;
};

/// Goes through the text of a JSON document without copying any of it. What it makes of text that
/// is no JSON does not matter, as long as it comes to an end.
class JsonScanner {
  public:
    explicit JsonScanner(std::string_view text) : text_(text) {}

    /// The next character that is no blank, '\0' at the end.
    char next();
    /// Goes past `expected` when it is next.
    bool take(char expected);
    /// Past the string whose quotation mark is next; gives what stands between the marks.
    std::string_view read_string();
    /// Past the value that is next; gives it.
    std::string_view read_value();
    std::size_t position() const { return at_; }
    void go_to(std::size_t position) { at_ = position; }

  private:
    std::string_view text_;
    std::size_t at_ = 0;
};

}  // namespace tavrix::ksef
