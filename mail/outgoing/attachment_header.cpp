#include "mail/outgoing/attachment_header.h"

#include <algorithm>

#include "mail/outgoing/header_field.h"

namespace tavrix::mail::outgoing {
namespace {

struct KnownType {
    base::TextView extension;
    std::string_view type;
};

// No more of them: readers that take files of a few types only, CMessage.DodajMail among them, take
// these, and everybody takes application/octet-stream.
constexpr KnownType known_types[] = {
    {u"pdf", "application/pdf"}, {u"xml", "text/xml"},   {u"zip", "application/zip"},
    {u"rtf", "application/rtf"}, {u"jpg", "image/jpeg"}, {u"jpeg", "image/jpeg"},
    {u"gif", "image/gif"},       {u"tif", "image/tiff"}, {u"tiff", "image/tiff"},
};

std::string_view type_of(base::TextView file_name) {
    const base::TextView extension = file_name.substr(file_name.rfind(u'.') + 1);
    for (const KnownType& known : known_types) {
        if (base::equal_case_blind(extension, known.extension)) return known.type;
    }
    return "application/octet-stream";
}

bool is_plain(base::TextView name) {
    return std::ranges::all_of(name, [](char16_t c) { return c >= 0x20 && c < 0x7F; });
}

// Polish letters without their marks, "_" for anything else beyond ASCII.
std::string in_plain_letters(base::TextView name) {
    constexpr base::TextView marked = u"ąćęłńóśźżĄĆĘŁŃÓŚŹŻ";
    constexpr std::string_view plain = "acelnoszzACELNOSZZ";
    std::string out;
    for (const char16_t c : name) {
        const std::size_t place = marked.find(c);
        const bool is_letter = place != base::TextView::npos;
        out += is_letter ? plain[place] : c >= 0x20 && c < 0x7F ? static_cast<char>(c) : '_';
    }
    return out;
}

std::string in_quotation_marks(std::string_view name) {
    std::string out = "\"";
    for (const char c : name) {
        if (c == '"' || c == '\\') out += '\\';
        out += c;
    }
    return out + '"';
}

// RFC 2231, section 4: what is no attribute-char, byte by byte.
std::string in_percents(std::string_view name) {
    constexpr char digits[] = "0123456789ABCDEF";
    constexpr std::string_view others = "!#$&+-.^_`|~";
    std::string out;
    for (const char c : name) {
        const auto byte = static_cast<unsigned char>(c);
        const bool is_alphanumeric =
            (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
        if (is_alphanumeric || others.find(c) != std::string_view::npos) {
            out += c;
        } else {
            out += {'%', digits[byte >> 4], digits[byte & 15]};
        }
    }
    return out;
}

// Section 3: in numbered pieces, but only when one line cannot hold it (RFC 5322, section 2.1.1):
// there are readers that put no pieces together.
std::string file_name_parameters(base::TextView name) {
    constexpr std::size_t longest_piece = 900;
    const std::string value = "UTF-8''" + in_percents(base::to_utf8(name));
    if (value.size() <= longest_piece) return "\r\n filename*=" + value + ";";
    std::string out;
    int number = 0;
    for (std::size_t at = 0; at < value.size();) {
        std::size_t end = std::min(at + longest_piece, value.size());
        // Not inside "%C5".
        const std::size_t percent = value.rfind('%', end - 1);
        if (end < value.size() && percent != std::string::npos && percent + 3 > end) end = percent;
        out +=
            "\r\n filename*" + std::to_string(number++) + "*=" + value.substr(at, end - at) + ";";
        at = end;
    }
    return out;
}

}  // namespace

std::string attachment_header(base::TextView file_name) {
    const bool plain = is_plain(file_name);
    const std::string in_ascii = in_quotation_marks(in_plain_letters(file_name));
    std::string header = "Content-Type: " + std::string(type_of(file_name)) + ";\r\n name=";
    header += plain ? in_ascii : "\"" + encoded_words(file_name, 7) + "\"";
    header += "\r\nContent-Transfer-Encoding: base64\r\nContent-Disposition: attachment;";
    // The whole name first: of two, some readers take the first.
    if (!plain) header += file_name_parameters(file_name) + "\r\n";
    return header + " filename=" + in_ascii + "\r\n\r\n";
}

}  // namespace tavrix::mail::outgoing
