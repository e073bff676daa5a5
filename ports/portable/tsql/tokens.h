#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tavrix::ports::tsql {

enum class TokenKind { word, quoted_name, text, number, symbol, end };

struct Token {
    TokenKind kind;
    std::string
        text;  ///< names without brackets or quotes, texts without apostrophes, both unescaped
    std::size_t offset;  ///< in bytes from the start of the statement
};

/// Cuts a statement into tokens; comments and white space are dropped, the last token is `end`.
/// Throws base::AutomationError with the offset for an unfinished text, name or comment and for a
/// character that no token begins with.
std::vector<Token> tokenize(std::string_view sql);

[[noreturn]] void refuse(std::string_view what, std::size_t offset);

/// ASCII letters only: SQL's own words.
std::string lower_ascii(std::string_view text);

}  // namespace tavrix::ports::tsql
