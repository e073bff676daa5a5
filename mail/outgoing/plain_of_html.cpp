#include "mail/outgoing/plain_of_html.h"

#include <algorithm>

namespace tavrix::mail::outgoing {
namespace {

constexpr base::TextView blanks = u" \t\r\n";
// Their ends, and "br" wherever it stands, end a line.
constexpr base::TextView blocks[] = {u"p",     u"div", u"tr", u"li", u"table", u"ul", u"ol",
                                     u"title", u"h1",  u"h2", u"h3", u"h4",    u"h5", u"h6"};

struct Entity {
    base::TextView name;
    char16_t letter;
};
constexpr Entity entities[] = {{u"amp", u'&'},    {u"lt", u'<'},   {u"gt", u'>'},
                               {u"quot", u'"'},   {u"nbsp", u' '}, {u"oacute", u'ó'},
                               {u"Oacute", u'Ó'}, {u"apos", u'\''}};

// 0 for what is no number of a letter.
char16_t numbered(base::TextView digits) {
    const bool is_hex = digits.starts_with(u'x') || digits.starts_with(u'X');
    if (is_hex) digits.remove_prefix(1);
    std::uint32_t number = 0;
    for (const char16_t c : digits) {
        const char16_t small = base::lower(c);
        const bool is_letter = is_hex && small >= u'a' && small <= u'f';
        if (!is_letter && (c < u'0' || c > u'9')) return 0;
        number = number * (is_hex ? 16 : 10) + (is_letter ? small - u'a' + 10u : c - u'0');
        if (number > 0xFFFF) return 0;
    }
    const bool is_letter = number >= 0x20 && (number < 0xD800 || number > 0xDFFF);
    return is_letter ? static_cast<char16_t>(number) : u'\0';
}

class PlainText {
  public:
    explicit PlainText(base::TextView html) : html_(html) {}

    base::Text read() {
        while (at_ < html_.size()) {
            const char16_t c = html_[at_];
            if (c == u'<' && take_tag()) continue;
            if (c == u'&' && take_entity()) continue;
            ++at_;
            if (blanks.find(c) != base::TextView::npos) {
                blank_ = true;
            } else {
                add(c);
            }
        }
        while (out_.ends_with(u'\n')) out_.pop_back();
        return std::move(out_);
    }

  private:
    void add(char16_t c) {
        if (blank_ && !out_.empty() && !out_.ends_with(u'\n')) out_ += u' ';
        blank_ = false;
        out_ += c;
    }

    void end_line() {
        blank_ = false;
        if (!out_.empty() && !out_.ends_with(u"\n\n")) out_ += u'\n';
    }

    // False when no tag begins here.
    bool take_tag() {
        const base::TextView rest = html_.substr(at_);
        if (rest.starts_with(u"<!--")) return skip_behind(u"-->");
        const std::size_t end = no_more_ends_ ? base::TextView::npos : html_.find(u'>', at_);
        no_more_ends_ = end == base::TextView::npos;
        if (no_more_ends_) return false;
        base::TextView tag = html_.substr(at_ + 1, end - at_ - 1);
        at_ = end + 1;
        const bool closes = tag.starts_with(u'/');
        if (closes) tag.remove_prefix(1);
        const base::TextView name = tag.substr(0, tag.find_first_of(u" \t\r\n/"));
        const auto is = [name](base::TextView other) {
            return base::equal_case_blind(name, other);
        };
        if (!closes && (is(u"style") || is(u"script"))) {
            skip_behind(is(u"style") ? u"</style>" : u"</script>");
        } else if (is(u"br") || (closes && std::ranges::any_of(blocks, is))) {
            end_line();
        } else if (is(u"td") || is(u"th")) {
            blank_ = true;
        }
        return true;
    }

    bool skip_behind(base::TextView end) {
        const std::size_t found = base::find_case_blind(html_, end, at_);
        at_ = found == base::TextView::npos ? html_.size() : found + end.size();
        return true;
    }

    bool take_entity() {
        constexpr std::size_t longest_name = 8;
        const base::TextView rest = html_.substr(at_ + 1, longest_name + 1);
        const std::size_t end = rest.find(u';');
        if (end == base::TextView::npos) return false;
        const base::TextView name = rest.substr(0, end);
        char16_t letter = name.starts_with(u'#') ? numbered(name.substr(1)) : u'\0';
        for (const Entity& known : entities) {
            if (name == known.name) letter = known.letter;
        }
        if (letter == 0) return false;
        at_ += end + 2;
        if (letter == u' ' || letter == 0xA0) {
            blank_ = true;
        } else {
            add(letter);
        }
        return true;
    }

    base::TextView html_;
    std::size_t at_ = 0;
    base::Text out_;
    bool blank_ = false;
    // Remembered, or a text of "<" alone would take a square of its length.
    bool no_more_ends_ = false;
};

}  // namespace

base::Text plain_of_html(base::TextView html) {
    return PlainText(html).read();
}

}  // namespace tavrix::mail::outgoing
