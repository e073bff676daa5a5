#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavrix::mail::mime {

/// One line of `bytes` from `at` on, without its end; `at` moves to the next. Ends are LF, with or
/// without a CR before it: boxes of old Unix systems hold bare ones.
std::string_view take_line(std::string_view bytes, std::size_t& at) noexcept;

/// True for letters that differ in case at most; ASCII, as everything is that steers a message.
bool same_name(std::string_view left, std::string_view right) noexcept;
/// Without the blanks and line ends at both ends.
std::string_view trimmed(std::string_view text) noexcept;
std::string lower_case(std::string_view text);

/// One field as it stands in the message, folded over its lines.
struct Field {
    std::string_view name;
    std::string_view value;
};

/// The header of a message or of one of its parts (RFC 5322, section 2.2). Views into the message.
struct Header {
    std::vector<Field> fields;

    /// The value, unfolded, of the first field of the name; what comes later under the same name is
    /// what somebody on the way has added.
    std::optional<std::string> first(std::string_view name) const;
    std::optional<std::string> last(std::string_view name) const;
};

/// What is made of a line in a header that is neither a field nor the continuation of one.
enum class HeaderNoise { left_out, begins_body };

/// Reads the header that begins at `at` and moves behind the empty line that ends it. `ends` is
/// asked about lines that begin with "--": the boundary of the part around it ends a header too.
template <typename Ends>
Header read_header(std::string_view bytes, std::size_t& at, HeaderNoise noise, Ends ends);

/// A line of a header: adds its field, or to the last one. False for one that is neither.
bool add_header_line(Header& header, std::string_view line);

template <typename Ends>
Header read_header(std::string_view bytes, std::size_t& at, HeaderNoise noise, Ends ends) {
    Header header;
    while (at < bytes.size()) {
        const std::size_t begin = at;
        const std::string_view line = take_line(bytes, at);
        if (line.empty()) break;
        const bool is_end = line.starts_with("--") && ends(line);
        if (is_end || (!add_header_line(header, line) && noise == HeaderNoise::begins_body)) {
            at = begin;
            break;
        }
    }
    return header;
}

}  // namespace tavrix::mail::mime
