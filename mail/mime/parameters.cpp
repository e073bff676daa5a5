#include "mail/mime/parameters.h"

#include <algorithm>
#include <charconv>
#include <map>

#include "mail/mime/header.h"
#include "mail/mime/hex.h"

namespace tavrix::mail::mime {
namespace {

// A name has at most so many pieces; each is a line's worth of it.
constexpr int most_pieces = 1000;

// `name*2*=value` taken apart.
struct Piece {
    int number = 0;
    // Has percent codes, and the first one also the character set before them.
    bool extended = false;
    std::string value;
};

// The pieces of one name. The plain form without a number is kept apart, because the others win
// unless they are empty or lack their beginning.
struct Pieces {
    std::vector<Piece> numbered;
    std::vector<Piece> plain;
};

// Reads the text up to the next separator and says what stands there.
class Scanner {
  public:
    explicit Scanner(std::string_view text) : text_(text) {}

    bool at_end() const { return at_ >= text_.size(); }
    // Moves behind the next of `stops` that stands outside quotation marks and comments; gives the
    // text before it without comments, its quotation marks undone. Without `has_comments` what is
    // in parentheses belongs to the text.
    std::string take_until(std::string_view stops, bool has_comments = true) {
        while (at_ < text_.size() && (text_[at_] == ' ' || text_[at_] == '\t')) ++at_;
        std::string taken;
        // How much of `taken` must not be trimmed, because it was quoted.
        std::size_t kept = 0;
        while (at_ < text_.size()) {
            const char c = text_[at_++];
            if (c == '"') {
                take_quoted(taken);
                kept = taken.size();
            } else if (c == '(' && has_comments &&
                       (taken.empty() || taken.back() == ' ' || taken.back() == '\t')) {
                skip_comment();
            } else if (stops.find(c) != std::string_view::npos) {
                stopped_at_ = c;
                return without_blanks(std::move(taken), kept);
            } else {
                taken += c;
            }
        }
        stopped_at_ = 0;
        return without_blanks(std::move(taken), kept);
    }
    // The separator that ended the last text; 0 at the end.
    char stopped_at() const { return stopped_at_; }

  private:
    // A backslash is taken for one unless it stands before what cannot stand alone: programs write
    // the paths of Windows as they are.
    void take_quoted(std::string& taken) {
        while (at_ < text_.size() && text_[at_] != '"') {
            const bool pair = text_[at_] == '\\' && at_ + 1 < text_.size() &&
                              (text_[at_ + 1] == '"' || text_[at_ + 1] == '\\');
            if (pair) ++at_;
            taken += text_[at_++];
        }
        if (at_ < text_.size()) ++at_;
    }

    void skip_comment() {
        for (int depth = 1; depth > 0 && at_ < text_.size(); ++at_) {
            if (text_[at_] == '(') ++depth;
            if (text_[at_] == ')') --depth;
            if (text_[at_] == '\\') ++at_;
        }
        at_ = std::min(at_, text_.size());
    }

    static std::string without_blanks(std::string text, std::size_t kept) {
        std::size_t end = text.size();
        while (end > kept && (text[end - 1] == ' ' || text[end - 1] == '\t')) --end;
        text.resize(end);
        return text;
    }

    std::string_view text_;
    std::size_t at_ = 0;
    char stopped_at_ = 0;
};

std::string without_percent_codes(std::string_view text) {
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const int byte = text[i] == '%' ? hex_byte(text, i + 1) : -1;
        out += byte < 0 ? text[i] : static_cast<char>(byte);
        if (byte >= 0) i += 2;
    }
    return out;
}

// RFC 2231, sections 3 and 4: "name*0*", "name*1", "name*".
std::string add_piece(std::string_view full_name, Piece piece, std::map<std::string, Pieces>& all) {
    std::string name = lower_case(full_name);
    if (name.ends_with('*')) {
        piece.extended = true;
        name.pop_back();
    }
    const std::size_t star = name.find('*');
    bool numbered = piece.extended;
    if (star != std::string::npos) {
        const char* const end = name.data() + name.size();
        const auto read = std::from_chars(name.data() + star + 1, end, piece.number);
        const bool counts = read.ec == std::errc() && read.ptr == end && piece.number >= 0 &&
                            piece.number < most_pieces;
        if (!counts) return {};
        numbered = true;
        name.resize(star);
    }
    Pieces& pieces = all[name];
    const bool first = pieces.numbered.empty() && pieces.plain.empty();
    (numbered ? pieces.numbered : pieces.plain).push_back(std::move(piece));
    return first ? name : std::string();
}

Parameter joined(const std::string& name, Pieces& pieces) {
    Parameter parameter{name, {}, {}};
    if (pieces.numbered.empty()) {
        parameter.value = pieces.plain.front().value;
        return parameter;
    }
    std::ranges::stable_sort(pieces.numbered, {}, &Piece::number);
    int expected = pieces.numbered.front().number;
    for (const Piece& piece : pieces.numbered) {
        if (piece.number < expected) continue;  // the same number again
        if (piece.number > expected) break;
        std::string_view value = piece.value;
        const std::size_t quote = piece.extended ? value.find('\'') : std::string_view::npos;
        const std::size_t second =
            quote == std::string_view::npos ? quote : value.find('\'', quote + 1);
        if (parameter.value.empty() && second != std::string_view::npos) {
            parameter.charset = std::string(value.substr(0, quote));
            value.remove_prefix(second + 1);
        }
        parameter.value += piece.extended ? without_percent_codes(value) : std::string(value);
        ++expected;
    }
    const bool is_whole = pieces.numbered.front().number == 0 && !parameter.value.empty();
    if (!is_whole && !pieces.plain.empty()) return {name, pieces.plain.front().value, {}};
    return parameter;
}

}  // namespace

const Parameter* ParameterizedValue::find(std::string_view name) const noexcept {
    const auto found = std::ranges::find(parameters, name, &Parameter::name);
    return found == parameters.end() ? nullptr : &*found;
}

ParameterizedValue parse_parameters(std::string_view text) {
    Scanner scanner(text);
    ParameterizedValue result;
    result.value = lower_case(scanner.take_until(";"));
    std::map<std::string, Pieces> all;
    std::vector<std::string> order;
    while (!scanner.at_end()) {
        const std::string name = scanner.take_until("=;");
        if (scanner.stopped_at() != '=') continue;
        // "filename=FV (1).pdf", as programs write it that know no quotation marks.
        const std::string lower = lower_case(name);
        const bool names_file = lower.starts_with("name") || lower.starts_with("filename");
        std::string value = scanner.take_until(";", !names_file);
        std::string first = add_piece(name, {0, false, std::move(value)}, all);
        if (!first.empty()) order.push_back(std::move(first));
    }
    for (const std::string& name : order) result.parameters.push_back(joined(name, all[name]));
    return result;
}

}  // namespace tavrix::mail::mime
