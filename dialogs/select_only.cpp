#include "dialogs/select_only.h"

#include <algorithm>
#include <span>
#include <vector>

namespace tavrix::dialogs {
namespace {

using base::Text;
using base::TextView;

enum class QueryTokenKind { word, quoted, number, symbol };

struct QueryToken {
    QueryTokenKind kind;
    TextView text;
    std::size_t position;

    bool is(TextView word) const {
        return kind != QueryTokenKind::quoted && base::equal_case_blind(text, word);
    }
};

struct QueryFault {
    Refusal refusal;
};

Text place_in_query(TextView sql, std::size_t position) {
    const TextView before = sql.substr(0, position);
    const std::size_t line_end = before.rfind(u'\n');
    const auto line = std::count(before.begin(), before.end(), u'\n') + 1;
    const std::size_t column = line_end == TextView::npos ? position : position - line_end - 1;
    return u" (wiersz " + base::to_decimal(line) + u", znak " +
           base::to_decimal(static_cast<std::int64_t>(column) + 1) + u")";
}

[[noreturn]] void refuse_query(TextView sql, std::size_t position, std::size_t length,
                               const Text& subject, TextView why) {
    throw QueryFault{
        {subject + place_in_query(sql, position) + u": " + Text(why), position, length}};
}

bool is_blank_in_query(char16_t c) {
    return c == u' ' || c == u'\t' || c == u'\r' || c == u'\n';
}
bool is_digit_in_query(char16_t c) {
    return c >= u'0' && c <= u'9';
}
// Latin, Greek and Cyrillic letters. Any other sign stands alone: a currency's is a number of its
// own to the server, and the word behind it counts.
bool begins_word(char16_t c) {
    return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || c == u'_' || c == u'@' ||
           c == u'#' || (c >= 0xC0 && c <= 0x52F && c != 0xD7 && c != 0xF7);
}
bool continues_word(char16_t c) {
    return begins_word(c) || is_digit_in_query(c) || c == u'$';
}

class QueryScanner {
  public:
    explicit QueryScanner(TextView sql) : sql_(sql) {}

    std::vector<QueryToken> tokens() {
        require_plain_signs();
        std::vector<QueryToken> found;
        for (skip_between(); at_ < sql_.size(); skip_between()) found.push_back(next());
        return found;
    }

  private:
    // Whether such a sign ends a line, and with it a comment, servers do not agree on; letters of
    // full width are read as plain ones by some.
    void require_plain_signs() const {
        for (std::size_t i = 0; i < sql_.size(); ++i) {
            const char16_t c = sql_[i];
            const bool ends_line = c == u'\n' || (c == u'\r' && sign(i + 1) == u'\n');
            const bool controls =
                (c < u' ' && c != u'\t') || (c >= 0x7F && c < 0xA0) || c == 0x2028 || c == 0x2029;
            if ((controls && !ends_line) || (c >= 0xFF01 && c <= 0xFF5E)) {
                refuse_query(sql_, i, 1, u"Znak", u"takiego znaku zapytanie nie może zawierać.");
            }
        }
    }

    char16_t sign(std::size_t at) const { return at < sql_.size() ? sql_[at] : char16_t{0}; }

    void skip_between() {
        for (;;) {
            if (at_ < sql_.size() && is_blank_in_query(sql_[at_])) {
                ++at_;
            } else if (sign(at_) == u'-' && sign(at_ + 1) == u'-') {
                at_ = std::min(sql_.find(u'\n', at_), sql_.size());
            } else if (sign(at_) == u'/' && sign(at_ + 1) == u'*') {
                skip_comment();
            } else {
                return;
            }
        }
    }

    // SQL Server's comments stand inside each other.
    void skip_comment() {
        const std::size_t start = at_;
        std::size_t depth = 0;
        do {
            if (sign(at_) == u'/' && sign(at_ + 1) == u'*') {
                ++depth;
                at_ += 2;
            } else if (sign(at_) == u'*' && sign(at_ + 1) == u'/') {
                --depth;
                at_ += 2;
            } else if (++at_ >= sql_.size()) {
                refuse_query(sql_, start, 2, u"Komentarz", u"nie ma końca.");
            }
        } while (depth > 0);
    }

    QueryToken next() {
        const std::size_t start = at_;
        const char16_t c = sql_[at_];
        if (c == u'\'' || c == u'"') return quoted(c);
        if (c == u'[') return quoted(u']');
        QueryTokenKind kind = QueryTokenKind::symbol;
        if (begins_word(c)) {
            kind = QueryTokenKind::word;
            while (continues_word(sign(at_))) ++at_;
        } else if (is_digit_in_query(c)) {
            kind = QueryTokenKind::number;
            number();
            // "1einto", "0xdelete": which of it is still the number is the server's secret.
            if (continues_word(sign(at_))) {
                refuse_query(sql_, start, at_ + 1 - start, u"Liczba",
                             u"po liczbie brakuje odstępu.");
            }
        } else {
            ++at_;
        }
        return {kind, sql_.substr(start, at_ - start), start};
    }

    void number() {
        if (sign(at_) == u'0' && (sign(at_ + 1) | 0x20) == u'x') {
            at_ += 2;
            while (is_digit_in_query(sign(at_)) ||
                   ((sign(at_) | 0x20) >= u'a' && (sign(at_) | 0x20) <= u'f')) {
                ++at_;
            }
            return;
        }
        while (is_digit_in_query(sign(at_)) || sign(at_) == u'.') ++at_;
        if ((sign(at_) | 0x20) != u'e') return;
        const std::size_t digits = sign(at_ + 1) == u'-' || sign(at_ + 1) == u'+' ? 2 : 1;
        if (!is_digit_in_query(sign(at_ + digits))) return;
        at_ += digits;
        while (is_digit_in_query(sign(at_))) ++at_;
    }

    QueryToken quoted(char16_t closing) {
        const std::size_t start = at_++;
        for (;;) {
            const std::size_t end = sql_.find(closing, at_);
            if (end == TextView::npos) {
                refuse_query(sql_, start, 1, u"Znak " + Text(1, sql_[start]), u"nie ma pary.");
            }
            at_ = end + 1;
            if (sign(at_) != closing) break;
            ++at_;
        }
        return {QueryTokenKind::quoted, sql_.substr(start, at_ - start), start};
    }

    TextView sql_;
    std::size_t at_ = 0;
};

// Words that begin a statement or belong to one that does not only read, and hints that keep others
// out of what is read. ELSE, END, FETCH and MERGE have a meaning in queries too.
constexpr TextView refused_words[] = {
    u"add",        u"alter",       u"backup",         u"begin",
    u"break",      u"bulk",        u"checkpoint",     u"close",
    u"commit",     u"continue",    u"create",         u"dbcc",
    u"deallocate", u"declare",     u"delete",         u"deny",
    u"drop",       u"dump",        u"exec",           u"execute",
    u"exit",       u"fetch",       u"goto",           u"grant",
    u"holdlock",   u"if",          u"insert",         u"into",
    u"kill",       u"lineno",      u"load",           u"merge",
    u"open",       u"openquery",   u"opendatasource", u"openrowset",
    u"paglock",    u"print",       u"proc",           u"procedure",
    u"raiserror",  u"readtext",    u"reconfigure",    u"repeatableread",
    u"restore",    u"return",      u"revert",         u"revoke",
    u"rollback",   u"save",        u"serializable",   u"set",
    u"setuser",    u"shutdown",    u"tablock",        u"tablockx",
    u"tran",       u"transaction", u"trigger",        u"truncate",
    u"update",     u"updatetext",  u"updlock",        u"use",
    u"waitfor",    u"while",       u"writetext",      u"xlock"};

// Ordinary names too, where no statement can begin.
constexpr TextView words_of_statements[] = {u"conversation", u"receive", u"throw"};
constexpr TextView words_before_names[] = {
    u"select", u"distinct", u"as", u"by", u"on", u"where", u"and", u"or", u"not", u"when", u"then",
    u"else",   u"(",        u",",  u".",  u"=",  u"<",     u">",   u"+",  u"-",   u"/",    u"%"};
constexpr TextView driver_dates[] = {u"d", u"t", u"ts"};
// They read whatever file of the network's they are told, quoted or not.
constexpr TextView file_functions[] = {u"fn_trace_gettable", u"fn_get_audit_file",
                                       u"fn_xe_file_target_read_file"};

bool is_one_of(const QueryToken& token, std::span<const TextView> words) {
    return std::ranges::any_of(words, [&](TextView word) { return token.is(word); });
}

// A letter of a script that the scanner gives sign by sign.
bool is_foreign_sign(const QueryToken& token) {
    return token.kind == QueryTokenKind::symbol && token.text.front() >= 0x80;
}

class QueryReader {
  public:
    QueryReader(TextView sql, std::vector<QueryToken> tokens)
        : sql_(sql), tokens_(std::move(tokens)) {}

    void require_one_select() {
        drop_semicolons();
        if (tokens_.empty()) throw QueryFault{{u"Wpisz zapytanie SELECT.", 0, 0}};
        const auto opened = std::ranges::find_if_not(
            tokens_, [](const QueryToken& token) { return token.is(u"("); });
        const bool selects = opened != tokens_.end() && opened->is(u"select");
        if (!selects && !tokens_.front().is(u"with")) {
            refuse_token(0, u"zapytanie zaczyna się od SELECT albo WITH.");
        }
        for (std::size_t i = 0; i < tokens_.size(); ++i) look_at(i);
    }

  private:
    void drop_semicolons() {
        const auto is_semicolon = [](const QueryToken& token) { return token.is(u";"); };
        while (!tokens_.empty() && is_semicolon(tokens_.back())) tokens_.pop_back();
        tokens_.erase(tokens_.begin(), std::ranges::find_if_not(tokens_, is_semicolon));
    }

    void look_at(std::size_t i) {
        const QueryToken& token = tokens_[i];
        if (token.is(u"(")) ++depth_;
        if (token.is(u")") && depth_-- == 0) refuse_token(i, u"nie ma nawiasu otwierającego.");
        if (token.is(u";")) refuse_token(i, u"dozwolone jest tylko jedno zapytanie.");
        if (token.is(u"{") && !is_driver_date(i))
            refuse_token(i, u"takiego znaku zapytanie nie może zawierać.");
        count_name_parts(i);
        refuse_file_function(i);
        if (token.kind != QueryTokenKind::word) return;
        if (token.is(u"select")) return look_at_select(i);
        if (token.is(u"next") && is_word(i + 1, u"value")) {
            refuse_token(i, u"numer z sekwencji zużywa się na stałe.");
        }
        if (is_refused(i)) refuse_token(i, u"tu można tylko czytać (SELECT).");
    }

    // Of the drivers' escapes, which call procedures too, only {d '...'}, {t '...'} and {ts '...'}.
    bool is_driver_date(std::size_t i) const {
        return i + 3 < tokens_.size() && is_one_of(tokens_[i + 1], driver_dates) &&
               tokens_[i + 2].text.front() == u'\'' && tokens_[i + 3].is(u"}");
    }

    // With three dots the first part is another server, also when a part between them is empty.
    void count_name_parts(std::size_t i) {
        const QueryToken& token = tokens_[i];
        if (token.is(u".")) {
            if (++dots_ < 3) return;
            const QueryToken& first = tokens_[name_start_];
            refuse_query(sql_, first.position, first.text.size(), u"Nazwa " + Text(first.text),
                         u"czteroczłonowa nazwa sięga na inny serwer.");
        }
        const bool goes_on = i > 0 && (is_word(i - 1, u".") || is_foreign_sign(token) ||
                                       is_foreign_sign(tokens_[i - 1]));
        const bool is_name =
            (token.kind != QueryTokenKind::symbol && token.text.front() != u'\'') ||
            is_foreign_sign(token);
        if (goes_on && is_name && dots_ > 0) return;
        dots_ = 0;
        name_start_ = i;
    }

    void refuse_file_function(std::size_t i) const {
        QueryToken name = tokens_[i];
        if (name.kind == QueryTokenKind::quoted) {
            name = {QueryTokenKind::word, name.text.substr(1, name.text.size() - 2), 0};
        }
        if (is_one_of(name, file_functions)) refuse_token(i, u"ta funkcja czyta pliki z dysku.");
    }

    void look_at_select(std::size_t i) {
        const bool begins = i == 0 || (tokens_.front().is(u"with") && is_word(i - 1, u")"));
        if (depth_ == 0 && begins && !has_select_) {
            has_select_ = true;
            return;
        }
        const std::size_t before = i > 0 && is_word(i - 1, u"all") ? i - 1 : i;
        const bool joins =
            before > 0 && (is_word(before - 1, u"union") || is_word(before - 1, u"except") ||
                           is_word(before - 1, u"intersect"));
        if (!joins && !(i > 0 && is_word(i - 1, u"("))) {
            refuse_token(i, u"dozwolone jest tylko jedno zapytanie.");
        }
    }

    bool is_refused(std::size_t i) const {
        const QueryToken& token = tokens_[i];
        if (token.is(u"fetch"))
            return i == 0 || !(is_word(i - 1, u"row") || is_word(i - 1, u"rows"));
        if (token.is(u"merge")) return !is_word(i + 1, u"join") && !is_word(i + 1, u"union");
        if (is_one_of(token, words_of_statements)) {
            return i == 0 || !is_one_of(tokens_[i - 1], words_before_names);
        }
        return is_one_of(token, refused_words);
    }

    bool is_word(std::size_t i, TextView word) const {
        return i < tokens_.size() && tokens_[i].is(word);
    }

    [[noreturn]] void refuse_token(std::size_t i, TextView why) const {
        const QueryToken& token = tokens_[i];
        constexpr std::size_t shown = 40;
        Text subject(token.text.substr(0, shown));
        std::ranges::transform(subject, subject.begin(), base::upper);
        refuse_query(sql_, token.position, token.text.size(),
                     (token.kind == QueryTokenKind::word ? u"Słowo " : u"Znak ") + subject, why);
    }

    TextView sql_;
    std::vector<QueryToken> tokens_;
    std::size_t depth_ = 0;
    /// Of the name that token `name_start_` begins.
    std::size_t dots_ = 0;
    std::size_t name_start_ = 0;
    bool has_select_ = false;
};

}  // namespace

std::optional<Refusal> refusal_of(TextView sql) {
    try {
        QueryReader(sql, QueryScanner(sql).tokens()).require_one_select();
        return std::nullopt;
    } catch (const QueryFault& fault) {
        return fault.refusal;
    }
}

}  // namespace tavrix::dialogs
