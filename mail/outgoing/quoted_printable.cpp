#include "mail/outgoing/quoted_printable.h"

namespace tavrix::mail::outgoing {
namespace {

// With the "=" of a soft line break.
constexpr std::size_t longest_encoded_line = 76;

bool is_special_at_line_start(std::string_view line) {
    return line.starts_with('.') || line.starts_with("--") || line.starts_with("From ");
}

void append_encoded(std::string& out, char c) {
    constexpr char digits[] = "0123456789ABCDEF";
    const auto byte = static_cast<unsigned char>(c);
    out += '=';
    out += digits[byte >> 4];
    out += digits[byte & 15];
}

void append_line(std::string& out, std::string_view line) {
    std::size_t used = 0;
    for (std::size_t i = 0; i < line.size(); ++i) {
        const char c = line[i];
        const bool is_last = i + 1 == line.size();
        const bool is_blank = c == ' ' || c == '\t';
        const bool is_plain = (c > ' ' && c <= '~' && c != '=') || (is_blank && !is_last);
        const bool encode = !is_plain || (i == 0 && is_special_at_line_start(line));
        const std::size_t width = encode ? 3 : 1;
        if (used + width > longest_encoded_line - (is_last ? 0 : 1)) {
            out += "=\r\n";
            used = 0;
            // The line that begins here is one of its own on the wire.
            if (!encode && is_special_at_line_start(line.substr(i))) {
                append_encoded(out, c);
                used = 3;
                continue;
            }
        }
        if (encode) {
            append_encoded(out, c);
        } else {
            out += c;
        }
        used += width;
    }
    out += "\r\n";
}

}  // namespace

std::string quoted_printable(base::TextView text) {
    const std::string bytes = base::to_utf8(text);
    std::string out;
    out.reserve(bytes.size() + bytes.size() / 8);
    for (std::size_t at = 0; at < bytes.size();) {
        const std::size_t end = std::min(bytes.find_first_of("\r\n", at), bytes.size());
        append_line(out, std::string_view(bytes).substr(at, end - at));
        const bool is_pair = bytes.compare(end, 2, "\r\n") == 0;
        at = end + (is_pair ? 2 : 1);
    }
    return out;
}

}  // namespace tavrix::mail::outgoing
