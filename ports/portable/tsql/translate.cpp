#include "ports/portable/tsql/translate.h"

#include <algorithm>
#include <array>
#include <optional>
#include <vector>

#include "ports/portable/tsql/tokens.h"

namespace tavrix::ports::tsql {
namespace {

struct Function {
    std::string_view name;    // in SQL Server
    std::string_view sqlite;  // what SQLite calls it; tsql_* are ours (functions.cpp)
    int least_arguments;
    int most_arguments;
};

constexpr std::array functions = {
    Function{"abs", "abs", 1, 1},
    Function{"avg", "avg", 1, 1},
    Function{"charindex", "tsql_charindex", 2, 3},
    Function{"coalesce", "coalesce", 2, 20},
    Function{"count", "count", 1, 1},
    Function{"getdate", "tsql_getdate", 0, 0},
    Function{"isnull", "ifnull", 2, 2},
    Function{"left", "tsql_left", 2, 2},
    Function{"len", "tsql_len", 1, 1},
    Function{"lower", "tsql_lower", 1, 1},
    Function{"ltrim", "ltrim", 1, 1},
    Function{"max", "max", 1, 1},
    Function{"min", "min", 1, 1},
    Function{"replace", "tsql_replace", 3, 3},
    Function{"right", "tsql_right", 2, 2},
    Function{"rtrim", "rtrim", 1, 1},
    Function{"substring", "tsql_substring", 3, 3},
    Function{"sum", "sum", 1, 1},
    Function{"upper", "tsql_upper", 1, 1},
};

// Words that mean the same in both dialects.
constexpr std::array<std::string_view, 38> keywords = {
    "all",  "and",      "as",     "asc",    "between", "by",    "case",   "delete",
    "desc", "distinct", "else",   "end",    "exists",  "from",  "group",  "having",
    "in",   "inner",    "insert", "into",   "is",      "join",  "left",   "like",
    "not",  "null",     "on",     "or",     "order",   "outer", "select", "set",
    "then", "union",    "update", "values", "when",    "where"};

// Words that begin what is not translated; taken for a name they would change a statement's
// meaning.
constexpr std::array<std::string_view, 37> refused = {
    "alter",  "apply",    "begin",     "cast",     "commit",  "convert",   "create",     "cross",
    "cursor", "declare",  "drop",      "exec",     "execute", "fetch",     "for",        "full",
    "go",     "grant",    "if",        "merge",    "offset",  "openquery", "openrowset", "option",
    "output", "over",     "partition", "percent",  "pivot",   "print",     "return",     "revoke",
    "right",  "rollback", "ties",      "truncate", "waitfor"};

bool contains(const auto& words, std::string_view word) {
    return std::ranges::find(words, word) != words.end();
}

class Translator {
  public:
    explicit Translator(std::string_view sql) : tokens_(tokenize(sql)) {}

    Translation run() {
        const std::string verb = word(0);
        if (!contains(std::array<std::string_view, 4>{"select", "insert", "update", "delete"},
                      verb)) {
            refuse("a statement that begins with '" + tokens_[0].text + "'", tokens_[0].offset);
        }
        Translation result;
        result.is_query = verb == "select";
        if (result.is_query) {
            result.row_table = find_row_table();
            if (!result.row_table.empty()) asks_for_rowid_ = true;
        }
        translate_until_end();
        result.sql = std::move(out_);
        result.parameters = parameters_;
        return result;
    }

  private:
    // The statement itself or one open parenthesis of it.
    struct Level {
        bool is_select = false;
        std::string limit;
        int commas = 0;
        bool empty = true;
        std::optional<Function> function;
        std::size_t offset = 0;
    };

    std::string word(std::size_t index) const {
        return index < tokens_.size() && tokens_[index].kind == TokenKind::word
                   ? lower_ascii(tokens_[index].text)
                   : std::string();
    }
    bool symbol(std::size_t index, std::string_view text) const {
        return index < tokens_.size() && tokens_[index].kind == TokenKind::symbol &&
               tokens_[index].text == text;
    }

    // Rows stand for the rows of one table when the select names one table and neither joins,
    // groups nor folds.
    std::string find_row_table() const {
        int depth = 0;
        std::string table;
        for (std::size_t i = 0; i < tokens_.size(); ++i) {
            if (symbol(i, "(")) ++depth;
            if (symbol(i, ")")) --depth;
            if (depth != 0) continue;
            const std::string name = word(i);
            if (name == "distinct" || name == "group" || name == "union" || name == "join")
                return "";
            const bool folds =
                name == "count" || name == "sum" || name == "min" || name == "max" || name == "avg";
            if (folds && symbol(i + 1, "(")) return "";
            if (name != "from") continue;
            std::size_t at = i + 1;
            if (word(at) == "dbo" && symbol(at + 1, ".")) at += 2;
            if (tokens_[at].kind != TokenKind::word && tokens_[at].kind != TokenKind::quoted_name)
                return "";
            table = tokens_[at].text;
            std::size_t next = at + 1;
            if (word(next) == "as") next += 2;
            if (symbol(next, ",") || symbol(next + 1, ",")) return "";
        }
        return table;
    }

    void translate_until_end() {
        levels_.emplace_back();
        while (tokens_[at_].kind != TokenKind::end) translate_one();
        if (levels_.size() != 1) refuse("parenthesis that is never closed", levels_.back().offset);
        close_level();
    }

    void translate_one() {
        const Token& token = tokens_[at_];
        const bool closes = token.kind == TokenKind::symbol && token.text == ")";
        if (!closes) levels_.back().empty = false;
        switch (token.kind) {
            case TokenKind::text:
                put(quote(token.text, '\''));
                break;
            case TokenKind::quoted_name:
                put(quote(token.text, '"'));
                break;
            case TokenKind::number:
                put(token.text);
                break;
            case TokenKind::word:
                translate_word();
                return;
            default:
                translate_symbol();
                return;
        }
        ++at_;
    }

    void translate_word() {
        const Token& token = tokens_[at_];
        const std::string name = lower_ascii(token.text);
        if (symbol(at_ + 1, "(")) {
            if (const auto* found = std::ranges::find(functions, name, &Function::name);
                found != functions.end()) {
                put(std::string(found->sqlite));
                begin_call(*found);
                return;
            }
        }
        if (name == "select") {
            translate_select();
        } else if (name == "with" && symbol(at_ + 1, "(") && word(at_ + 2) == "nolock" &&
                   symbol(at_ + 3, ")")) {
            at_ += 4;
        } else if (name == "dbo" && symbol(at_ + 1, ".")) {
            at_ += 2;
        } else if (name == "top" || name == "with" || contains(refused, name)) {
            refuse("'" + token.text + "'", token.offset);
        } else if (contains(keywords, name)) {
            put(name);
            ++at_;
        } else if (symbol(at_ + 1, "(") && !may_precede_list()) {
            refuse("function '" + token.text + "'", token.offset);
        } else {
            // Quoted, so that a host's name that is a word of SQLite's own stays a name.
            put(quote(token.text, '"'));
            ++at_;
        }
    }

    // "insert into table (columns)" is the one place where a name stands before a parenthesis.
    bool may_precede_list() const {
        std::size_t before = at_;
        while (before >= 2 && symbol(before - 1, ".")) before -= 2;
        return before > 0 && word(before - 1) == "into";
    }

    void translate_select() {
        Level& level = levels_.back();
        if (level.is_select && word(at_ - 1) != "union" && word(at_ - 1) != "all") {
            refuse("a second statement", tokens_[at_].offset);
        }
        level.is_select = true;
        put("select");
        ++at_;
        if (word(at_) == "distinct") {
            put("distinct");
            ++at_;
        }
        if (word(at_) == "top") take_top(level);
        if (asks_for_rowid_ && levels_.size() == 1) {
            put("rowid,");
            asks_for_rowid_ = false;
        }
    }

    void take_top(Level& level) {
        const bool parenthesised = symbol(at_ + 1, "(");
        const std::size_t number = at_ + (parenthesised ? 2 : 1);
        const bool whole =
            tokens_[std::min(number, tokens_.size() - 1)].kind == TokenKind::number &&
            tokens_[number].text.find('.') == std::string::npos &&
            (!parenthesised || symbol(number + 1, ")"));
        if (!whole || !level.limit.empty())
            refuse("'top' without a plain number", tokens_[at_].offset);
        level.limit = tokens_[number].text;
        at_ = number + (parenthesised ? 2 : 1);
    }

    void translate_symbol() {
        const Token& token = tokens_[at_];
        if (token.text == "(") {
            open_level(token.offset);
            put("(");
        } else if (token.text == ")") {
            if (levels_.size() == 1) refuse("parenthesis that was never opened", token.offset);
            close_level();
            put(")");
        } else if (token.text == ";") {
            if (tokens_[at_ + 1].kind != TokenKind::end) refuse("a second statement", token.offset);
        } else if (token.text == "?") {
            ++parameters_;
            put("?");
        } else if (token.text == "+" && joins_texts()) {
            put("||");
        } else {
            if (token.text == ",") ++levels_.back().commas;
            put(token.text == "!=" ? "<>" : token.text);
        }
        ++at_;
    }

    // SQL Server joins texts with +. Which of the two + means is seen from a text on either side of
    // a chain of operands; a chain of bare columns adds.
    bool joins_texts() const {
        const auto ends_chain = [&](std::size_t i) {
            return tokens_[i].kind == TokenKind::end || symbol(i, ",") || symbol(i, "=") ||
                   symbol(i, "(") || symbol(i, ")") || symbol(i, "<") || symbol(i, ">") ||
                   contains(keywords, word(i));
        };
        for (std::size_t i = at_ + 1; !ends_chain(i); ++i) {
            if (tokens_[i].kind == TokenKind::text) return true;
        }
        for (std::size_t i = at_; i-- > 0 && !ends_chain(i);) {
            if (tokens_[i].kind == TokenKind::text) return true;
        }
        return false;
    }

    Level& open_level(std::size_t offset) {
        Level& level = levels_.emplace_back();
        level.offset = offset;
        return level;
    }

    void begin_call(const Function& function) {
        open_level(tokens_[at_].offset).function = function;
        put("(");
        at_ += 2;
    }

    void close_level() {
        const Level level = levels_.back();
        levels_.pop_back();
        if (level.function) {
            const int arguments = level.empty ? 0 : level.commas + 1;
            if (arguments < level.function->least_arguments ||
                arguments > level.function->most_arguments) {
                refuse("number of arguments of '" + std::string(level.function->name) + "'",
                       level.offset);
            }
        }
        if (!level.limit.empty()) put("limit " + level.limit);
        if (levels_.empty()) levels_.emplace_back();
    }

    void put(std::string_view text) {
        if (!out_.empty()) out_ += ' ';
        out_ += text;
    }

    static std::string quote(std::string_view text, char mark) {
        std::string quoted(1, mark);
        for (const char c : text) {
            quoted += c;
            if (c == mark) quoted += c;
        }
        return quoted + mark;
    }

    std::vector<Token> tokens_;
    std::size_t at_ = 0;
    std::vector<Level> levels_;
    bool asks_for_rowid_ = false;
    std::size_t parameters_ = 0;
    std::string out_;
};

}  // namespace

Translation translate(std::string_view sql) {
    return Translator(sql).run();
}

}  // namespace tavrix::ports::tsql
