#include "mail/mime/transfer_encoding.h"

#include <algorithm>
#include <cstring>

#include "base/base64_blocks.h"
#include "mail/mime/header.h"
#include "mail/mime/hex.h"

namespace tavrix::mail::mime {
namespace {

void append(base::Bytes& out, std::string_view text) {
    const base::ByteView bytes = base::bytes_of(text);
    out.insert(out.end(), bytes.begin(), bytes.end());
}

// The bytes of the letters of an incomplete block: `count` of them, their values in `letters`.
void end_block(std::uint32_t letters, int count, std::uint8_t*& out) {
    if (count < 2) return;  // six bits are no byte
    letters <<= 6 * (4 - count);
    *out++ = static_cast<std::uint8_t>(letters >> 16);
    if (count > 2) *out++ = static_cast<std::uint8_t>(letters >> 8);
    if (count > 3) *out++ = static_cast<std::uint8_t>(letters);
}

// True where behind the padding a line follows that is no Base64: what a scanner on the way has
// written there.
bool begins_footer(std::string_view rest) {
    // As much of the line as tells; each padding looks at it.
    constexpr std::size_t telling = 100;
    std::size_t at = rest.find_first_not_of("= \t\r\n");
    if (at == std::string_view::npos) return false;
    return std::ranges::any_of(trimmed(take_line(rest.substr(0, at + telling), at)), [](char c) {
        return c != '=' && base::base64_value(static_cast<std::uint8_t>(c)) >= 64;
    });
}

base::Bytes decode_base64(std::string_view body) {
    base::Bytes bytes(body.size() / 4 * 3 + 6);
    std::uint8_t* out = bytes.data();
    std::uint32_t letters = 0;
    int count = 0;
    for (std::size_t at = 0; at < body.size(); ++at) {
        if (count == 0) {
            at += base::decode_base64_blocks(body.substr(at), out);
            if (at >= body.size()) break;
        }
        const char c = body[at];
        const std::uint32_t value = base::base64_value(static_cast<std::uint8_t>(c));
        if (value < 64) {
            letters = letters << 6 | value;
            ++count;
        }
        if (count == 4 || c == '=') {
            const bool padded = c == '=' && count > 0;
            end_block(letters, count, out);
            letters = 0;
            count = 0;
            if (padded && begins_footer(body.substr(at))) break;
        }
    }
    end_block(letters, count, out);
    bytes.resize(static_cast<std::size_t>(out - bytes.data()));
    return bytes;
}

// One line, without the blanks that somebody on the way has put behind it (RFC 2045, section 6.7,
// rule 3). False when the line goes on in the next.
bool decode_quoted_line(std::string_view line, base::Bytes& bytes) {
    line = line.substr(0, line.find_last_not_of(" \t") + 1);
    std::size_t begin = 0;
    for (;;) {
        const std::size_t mark = line.find('=', begin);
        append(bytes, line.substr(begin, mark == std::string_view::npos ? mark : mark - begin));
        if (mark == std::string_view::npos) return true;
        if (mark + 1 == line.size()) return false;
        const int byte = hex_byte(line, mark + 1);
        bytes.push_back(byte < 0 ? std::uint8_t{'='} : static_cast<std::uint8_t>(byte));
        begin = mark + (byte < 0 ? 1 : 3);
    }
}

base::Bytes decode_quoted_printable(std::string_view body) {
    base::Bytes bytes;
    bytes.reserve(body.size());
    for (std::size_t at = 0; at < body.size();) {
        const std::string_view line = take_line(body, at);
        if (!decode_quoted_line(line, bytes)) continue;
        // The line's own end, whichever it is.
        const auto end = static_cast<std::size_t>(line.data() + line.size() - body.data());
        append(bytes, body.substr(end, at - end));
    }
    return bytes;
}

// One line of uuencode: its first character is the number of bytes, each further one has six bits.
void decode_uu_line(std::string_view line, base::Bytes& bytes) {
    const auto six_bits = [&](std::size_t i) {
        return i < line.size() ? (static_cast<std::uint32_t>(line[i]) - 32) & 0x3F : 0;
    };
    const std::size_t count = six_bits(0);
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t letter = 1 + i / 3 * 4 + i % 3;
        const std::uint32_t pair = six_bits(letter) << 6 | six_bits(letter + 1);
        bytes.push_back(static_cast<std::uint8_t>(pair >> (4 - 2 * (i % 3))));
    }
}

base::Bytes decode_uuencode(std::string_view body) {
    base::Bytes bytes;
    bool inside = false;
    for (std::size_t at = 0; at < body.size();) {
        const std::string_view line = take_line(body, at);
        if (inside && line == "end") break;
        if (inside && !line.empty()) decode_uu_line(line, bytes);
        inside = inside || line.starts_with("begin ");
    }
    if (!inside) append(bytes, body);
    return bytes;
}

}  // namespace

TransferEncoding transfer_encoding(std::string_view name) noexcept {
    if (same_name(name, "base64")) return TransferEncoding::base64;
    if (same_name(name, "quoted-printable")) return TransferEncoding::quoted_printable;
    for (const std::string_view known : {"x-uuencode", "x-uue", "uuencode"}) {
        if (same_name(name, known)) return TransferEncoding::uuencode;
    }
    return TransferEncoding::identity;
}

base::Bytes decode_body(TransferEncoding encoding, std::string_view body) {
    switch (encoding) {
        case TransferEncoding::base64:
            return decode_base64(body);
        case TransferEncoding::quoted_printable:
            return decode_quoted_printable(body);
        case TransferEncoding::uuencode:
            return decode_uuencode(body);
        case TransferEncoding::identity:
            break;
    }
    const base::ByteView bytes = base::bytes_of(body);
    return {bytes.begin(), bytes.end()};
}

}  // namespace tavrix::mail::mime
