#include "ports/portable/tsql/tokens.h"

#include <array>

#include "base/error.h"

namespace tavrix::ports::tsql {
namespace {

constexpr auto npos = std::string_view::npos;

bool is_digit(char c) {
    return c >= '0' && c <= '9';
}
// Bytes from 0x80 belong to letters of names in UTF-8.
bool begins_word(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c == '#' ||
           static_cast<unsigned char>(c) >= 0x80;
}
bool continues_word(char c) {
    return begins_word(c) || is_digit(c) || c == '$' || c == '@';
}

class Scanner {
  public:
    explicit Scanner(std::string_view sql) : sql_(sql) {}

    Token next() {
        skip_blanks_and_comments();
        const std::size_t start = at_;
        if (at_ >= sql_.size()) return {TokenKind::end, "", start};
        const char c = sql_[at_];
        if (c == '\'') return {TokenKind::text, quoted('\'', "text"), start};
        if ((c == 'N' || c == 'n') && peek(1) == '\'') {
            ++at_;
            return {TokenKind::text, quoted('\'', "text"), start};
        }
        if (c == '[') return {TokenKind::quoted_name, quoted(']', "name"), start};
        if (c == '"') return {TokenKind::quoted_name, quoted('"', "name"), start};
        if (begins_word(c)) return {TokenKind::word, while_true(continues_word), start};
        if (is_digit(c) || (c == '.' && is_digit(peek(1))))
            return {TokenKind::number, number(), start};
        return {TokenKind::symbol, symbol(), start};
    }

  private:
    char peek(std::size_t ahead) const {
        return at_ + ahead < sql_.size() ? sql_[at_ + ahead] : '\0';
    }

    void skip_blanks_and_comments() {
        for (;;) {
            const char c = peek(0);
            if (at_ >= sql_.size()) return;
            if (c == ' ' || c == '\t' || c == '\r' || c == '\n') {
                ++at_;
            } else if (c == '-' && peek(1) == '-') {
                const std::size_t end = sql_.find('\n', at_);
                at_ = end == npos ? sql_.size() : end;
            } else if (c == '/' && peek(1) == '*') {
                const std::size_t end = sql_.find("*/", at_ + 2);
                if (end == npos) refuse("unfinished comment", at_);
                at_ = end + 2;
            } else {
                return;
            }
        }
    }

    // From the opening mark to `closing`; a doubled closing mark stands for one.
    std::string quoted(char closing, std::string_view what) {
        const std::size_t start = at_++;
        std::string text;
        for (;;) {
            const std::size_t end = sql_.find(closing, at_);
            if (end == npos) refuse("unfinished " + std::string(what), start);
            text += sql_.substr(at_, end - at_);
            at_ = end + 1;
            if (peek(0) != closing) return text;
            text += closing;
            ++at_;
        }
    }

    std::string while_true(bool (*belongs)(char)) {
        const std::size_t start = at_;
        while (at_ < sql_.size() && belongs(sql_[at_])) ++at_;
        return std::string(sql_.substr(start, at_ - start));
    }

    std::string number() {
        std::string digits = while_true(is_digit);
        if (peek(0) == '.') {
            ++at_;
            digits += "." + while_true(is_digit);
        }
        if (begins_word(peek(0))) refuse("number that runs into a word", at_);
        return digits;
    }

    std::string symbol() {
        static constexpr std::array<std::string_view, 18> symbols = {
            "<>", "<=", ">=", "!=", "(", ")", ",", ".", "*",
            "+",  "-",  "/",  "%",  "=", "<", ">", ";", "?"};
        for (const std::string_view candidate : symbols) {
            if (sql_.substr(at_).starts_with(candidate)) {
                at_ += candidate.size();
                return std::string(candidate);
            }
        }
        refuse("character '" + std::string(1, sql_[at_]) + "'", at_);
    }

    std::string_view sql_;
    std::size_t at_ = 0;
};

}  // namespace

std::vector<Token> tokenize(std::string_view sql) {
    std::vector<Token> tokens;
    Scanner scanner(sql);
    do {
        tokens.push_back(scanner.next());
    } while (tokens.back().kind != TokenKind::end);
    return tokens;
}

void refuse(std::string_view what, std::size_t offset) {
    throw base::AutomationError(base::ErrorNumber::database_failed, u"Database",
                                base::from_utf8("SQL not understood at byte " +
                                                std::to_string(offset) + ": " + std::string(what)));
}

std::string lower_ascii(std::string_view text) {
    std::string lower(text);
    for (char& c : lower) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + 32);
    }
    return lower;
}

}  // namespace tavrix::ports::tsql
