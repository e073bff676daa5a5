#include "mail/smtp/reply.h"

#include <algorithm>
#include <utility>

#include "base/error.h"

namespace tavrix::mail::smtp {
namespace {

// The standard has 512; servers that say why are more talkative.
constexpr std::size_t longest_reply_line = 4096;
constexpr std::size_t most_reply_lines = 200;
constexpr std::size_t longest_shown = 600;

base::Text shown(std::string_view words) {
    base::Text text = base::from_utf8(words.substr(0, longest_shown));
    std::ranges::replace_if(
        text, [](char16_t c) { return c < 0x20 || (c >= 0x7F && c <= 0x9F); }, u' ');
    return text;
}

[[noreturn]] void fail_to_understand(base::TextView what) {
    throw base::AutomationError(base::ErrorNumber::component_failed, u"SMTP", base::Text(what));
}

bool is_reply_line(std::string_view line) {
    const auto is_digit = [](char c) { return c >= '0' && c <= '9'; };
    return line.size() >= 3 && line[0] >= '2' && line[0] <= '5' && is_digit(line[1]) &&
           is_digit(line[2]) && (line.size() == 3 || line[3] == ' ' || line[3] == '-');
}

}  // namespace

base::Text Reply::text() const {
    std::string words = std::to_string(code);
    for (const std::string& line : lines) {
        if (!line.empty()) words += " " + line;
    }
    return shown(words);
}

std::optional<Reply> ReplyReader::next() {
    for (std::size_t end = pending_.find('\n'); end != std::string::npos;
         end = pending_.find('\n')) {
        std::string line = pending_.substr(0, end);
        pending_.erase(0, end + 1);
        if (line.ends_with('\r')) line.pop_back();
        if (!is_reply_line(line))
            fail_to_understand(u"Niezrozumiała odpowiedź serwera: " + shown(line));
        reply_.code = (line[0] - '0') * 100 + (line[1] - '0') * 10 + (line[2] - '0');
        reply_.lines.push_back(line.size() > 4 ? line.substr(4) : std::string());
        if (line.size() == 3 || line[3] == ' ') return std::exchange(reply_, Reply());
        if (reply_.lines.size() > most_reply_lines) {
            fail_to_understand(u"Odpowiedź serwera nie ma końca.");
        }
    }
    if (pending_.size() > longest_reply_line)
        fail_to_understand(u"Odpowiedź serwera nie ma końca.");
    return std::nullopt;
}

}  // namespace tavrix::mail::smtp
