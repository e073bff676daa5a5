#include "ports/portable/tsql/single_row.h"

#include "base/error.h"
#include "ports/portable/tsql/tokens.h"

namespace tavrix::ports::tsql {
namespace {

class Reader {
  public:
    explicit Reader(base::TextView sql) : tokens_(tokenize(base::to_utf8(sql))) {}

    std::optional<SingleRow> read() {
        if (!take_word("select") || !skip_to_from()) return std::nullopt;
        const std::string table = take_name();
        if (table.empty() || !take_word("where")) return std::nullopt;
        const std::string column = take_name();
        if (column.empty() || !take_symbol("=")) return std::nullopt;
        const std::string sign = take_symbol("-") ? "-" : "";
        const Token& number = next();
        if (number.kind != TokenKind::number || number.text.find('.') != std::string::npos) {
            return std::nullopt;
        }
        ++at_;
        take_symbol(";");
        if (next().kind != TokenKind::end) return std::nullopt;
        return SingleRow{base::from_utf8(table), base::from_utf8(column + "=" + sign + number.text),
                         base::from_utf8(column)};
    }

  private:
    const Token& next() const { return tokens_[at_]; }

    bool take_word(std::string_view word) {
        const bool there = next().kind == TokenKind::word && lower_ascii(next().text) == word;
        if (there) ++at_;
        return there;
    }

    bool take_symbol(std::string_view symbol) {
        const bool there = next().kind == TokenKind::symbol && next().text == symbol;
        if (there) ++at_;
        return there;
    }

    // Past the first "from" outside parentheses; a second select before it is another statement.
    bool skip_to_from() {
        for (int depth = 0; next().kind != TokenKind::end; ++at_) {
            if (next().kind == TokenKind::symbol && next().text == "(") ++depth;
            if (next().kind == TokenKind::symbol && next().text == ")") --depth;
            if (depth == 0 && take_word("from")) return true;
            if (depth == 0 && take_word("select")) return false;
        }
        return false;
    }

    // "table", "dbo.table", "[the base]..table" with its parts as they were written.
    std::string take_name() {
        std::string name;
        for (;;) {
            if (next().kind == TokenKind::word) {
                name += next().text;
            } else if (next().kind == TokenKind::quoted_name) {
                name += bracketed(next().text);
            } else {
                return "";
            }
            ++at_;
            if (!take_symbol(".")) return name;
            name += '.';
            if (take_symbol(".")) name += '.';
        }
    }

    static std::string bracketed(std::string_view name) {
        std::string text = "[";
        for (const char c : name) {
            text += c;
            if (c == ']') text += c;
        }
        return text + ']';
    }

    std::vector<Token> tokens_;
    std::size_t at_ = 0;
};

}  // namespace

std::optional<SingleRow> single_row_of(base::TextView sql) {
    try {
        return Reader(sql).read();
    } catch (const base::AutomationError&) {
        return std::nullopt;
    }
}

}  // namespace tavrix::ports::tsql
