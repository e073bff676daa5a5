#include "mail/literal/boundary_lines.h"

#include <cstring>

namespace tavrix::mail {
namespace {

constexpr base::TextView line_end = u"\r\n";
constexpr base::TextView programs_own[] = {u"--_----------=", u"------=_", u"--0__"};

// The next hyphen from `at` on, four characters at a time: nearly all of a message is Base64, which
// has none.
std::size_t find_hyphen(base::TextView text, std::size_t at) {
    constexpr std::uint64_t ones = 0x0001'0001'0001'0001;
    constexpr std::uint64_t highest = 0x8000'8000'8000'8000;
    for (; at + 4 <= text.size(); at += 4) {
        std::uint64_t four = 0;
        std::memcpy(&four, text.data() + at, sizeof four);
        four ^= ones * u'-';
        if (((four - ones) & ~four & highest) != 0) break;
    }
    return text.find(u'-', at);
}

bool begins_line(base::TextView text, std::size_t at) {
    return at == 0 || (at >= 2 && text.substr(at - 2, 2) == line_end);
}

}  // namespace

base::TextView Lines::take() {
    const std::size_t begin = at_;
    const std::size_t end = text_.find(line_end, begin);
    if (end == base::TextView::npos) {
        at_ = text_.size() + 1;
        return text_.substr(begin);
    }
    at_ = end + line_end.size();
    return text_.substr(begin, end - begin);
}

void BoundaryLines::read_header_line(base::TextView line) {
    constexpr base::TextView quoted = u"boundary=\"";
    constexpr base::TextView unquoted = u"boundary=";
    if (const std::size_t at = base::find_case_blind(line, quoted); at != base::TextView::npos) {
        base::TextView value = base::trim(line.substr(at + quoted.size()));
        as_read_ = value;
        // The text behind the closing quotation mark is a part of the boundary, as it always was.
        const bool is_current = profile_ == base::Profile::current;
        const std::size_t end = is_current ? value.find(u'"') : base::TextView::npos;
        if (end != base::TextView::npos) return take_boundary(value.substr(0, end));
        return take_boundary(value.substr(0, value.empty() ? 0 : value.size() - 1));
    }
    if (profile_ == base::Profile::classic) return;
    if (const std::size_t at = base::find_case_blind(line, unquoted); at != base::TextView::npos) {
        const base::TextView value = line.substr(at + unquoted.size());
        as_read_ = base::trim(value.substr(0, value.find_first_of(u"; \t")));
        take_boundary(as_read_);
    }
}

void BoundaryLines::take_boundary(base::TextView boundary) {
    boundary_ = boundary;
    const base::Text looked_for = boundary_ + u"-";
    restart_.assign(looked_for.size(), 0);
    for (std::size_t i = 1, length = 0; i < looked_for.size(); ++i) {
        while (length > 0 && looked_for[i] != looked_for[length]) length = restart_[length - 1];
        if (looked_for[i] == looked_for[length]) ++length;
        restart_[i] = length;
    }
}

std::optional<BoundaryLine> BoundaryLines::next(base::TextView body, std::size_t at) const {
    while (at < body.size() && (at = find_hyphen(body, at)) != base::TextView::npos) {
        if (!begins_line(body, at)) {
            ++at;
            continue;
        }
        Lines lines(body);
        lines.move_to(at);
        const base::TextView line = lines.take();
        if (closes(line)) return BoundaryLine{at, lines.position(), true};
        if (is_boundary(line)) return BoundaryLine{at, lines.position(), false};
        at = lines.position();
    }
    return std::nullopt;
}

bool BoundaryLines::is_boundary(base::TextView line) const {
    for (const base::TextView own : programs_own) {
        if (line.starts_with(own)) return true;
    }
    if (profile_ == base::Profile::current && boundary_.empty()) return false;
    if (line.starts_with(u"--") && (line.substr(2) == boundary_ || line.substr(2) == as_read_)) {
        return true;
    }
    return line.starts_with(u"-----") && holds_boundary_and_hyphen(line);
}

bool BoundaryLines::closes(base::TextView line) const {
    return profile_ == base::Profile::current && !boundary_.empty() && line.starts_with(u"--") &&
           line.ends_with(u"--") && line.substr(2, line.size() - 4) == boundary_;
}

bool BoundaryLines::holds_boundary_and_hyphen(base::TextView line) const {
    std::size_t length = 0;
    for (const char16_t c : line) {
        const auto wanted = [&] { return length < boundary_.size() ? boundary_[length] : u'-'; };
        while (length > 0 && c != wanted()) length = restart_[length - 1];
        if (c == wanted()) ++length;
        if (length == restart_.size()) return true;
    }
    return false;
}

}  // namespace tavrix::mail
