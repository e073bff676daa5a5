#include "mail/outgoing/header_field.h"

#include <algorithm>

#include "base/base64.h"
#include "base/error.h"

namespace tavrix::mail::outgoing {
namespace {

constexpr std::size_t longest_line = 76;
constexpr std::size_t longest_word = 75;
constexpr std::string_view word_begin = "=?UTF-8?B?";
constexpr std::string_view word_end = "?=";
// RFC 5322, section 2.1.1, allows 998 without the line end.
constexpr std::size_t longest_ascii_text = 900;
constexpr std::size_t longest_ascii_name = 60;

base::Text on_one_line(base::TextView text) {
    base::Text line;
    for (const char16_t c : text) {
        const bool is_control = c < 0x20 || (c >= 0x7F && c <= 0x9F);
        if (!is_control) {
            line += c;
        } else if (!line.ends_with(u' ')) {
            line += u' ';
        }
    }
    return base::Text(base::trim(line));
}

bool is_ascii(base::TextView text) {
    return std::ranges::all_of(text, [](char16_t c) { return c < 0x80; });
}

// "=?" would be taken for an encoded word.
bool stands_for_itself(base::TextView text, std::size_t longest) {
    return is_ascii(text) && text.size() <= longest && text.find(u"=?") == base::TextView::npos;
}

bool continues_letter(char c) {
    return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

// RFC 5322, section 3.2.4.
std::string quoted(base::TextView name) {
    std::string out = "\"";
    for (const char c : base::to_utf8(name)) {
        if (c == '"' || c == '\\') out += '\\';
        out += c;
    }
    return out + '"';
}

std::string with_name(const Mailbox& mailbox, std::size_t column) {
    const base::Text name = on_one_line(mailbox.name);
    if (name.empty()) return mailbox.address;
    const std::string address = "<" + mailbox.address + ">";
    if (stands_for_itself(name, longest_ascii_name)) return quoted(name) + " " + address;
    return encoded_words(name, column) + "\r\n " + address;
}

}  // namespace

std::string encoded_words(base::TextView text, std::size_t column) {
    const std::string bytes = base::to_utf8(text);
    std::string out;
    for (std::size_t at = 0; at < bytes.size();) {
        const std::size_t room =
            std::min(longest_word, longest_line - std::min(column, longest_line));
        const std::size_t around = word_begin.size() + word_end.size();
        // Groups of four characters hold three bytes.
        std::size_t count = room > around + 8 ? (room - around) / 4 * 3 : 0;
        count = std::min(count, bytes.size() - at);
        while (count > 0 && at + count < bytes.size() && continues_letter(bytes[at + count]))
            --count;
        if (count > 0) {
            out += word_begin;
            out += base::base64_encode(base::bytes_of(std::string_view(bytes).substr(at, count)));
            out += word_end;
            at += count;
        }
        if (at < bytes.size()) out += "\r\n ";
        column = 1;
    }
    return out;
}

std::string text_field(std::string_view name, base::TextView text) {
    const base::Text line = on_one_line(text);
    const std::string begin = std::string(name) + ": ";
    const bool is_plain = stands_for_itself(line, longest_ascii_text);
    return begin + (is_plain ? base::to_utf8(line) : encoded_words(line, begin.size())) + "\r\n";
}

std::string address_field(std::string_view name, std::span<const Mailbox> mailboxes) {
    std::string field = std::string(name) + ": ";
    if (mailboxes.empty()) return field + "undisclosed-recipients:;\r\n";
    std::size_t column = field.size();
    for (std::size_t i = 0; i < mailboxes.size(); ++i) {
        if (i > 0) field += ",\r\n ";
        field += with_name(mailboxes[i], column);
        column = 1;
    }
    return field + "\r\n";
}

std::string address_or_text_field(std::string_view name, base::TextView value) {
    const base::Text line = on_one_line(value);
    if (line.empty()) return {};
    try {
        const Mailbox mailbox = parse_mailbox(line);
        if (!mailbox.domain().empty()) return address_field(name, std::span(&mailbox, 1));
    } catch (const base::AutomationError&) {
        // A text then.
    }
    return text_field(name, line);
}

}  // namespace tavrix::mail::outgoing
