#include "mail/mime/message.h"

#include <algorithm>
#include <cstring>

#include "mail/mime/charset.h"
#include "mail/mime/encoded_words.h"
#include "mail/mime/parameters.h"

namespace tavrix::mail::mime {
namespace {

// A multipart that the reader is inside of.
struct Multipart {
    std::string boundary;
    bool alternative = false;
    // Of an alternative: how many texts there were before it, and whether one of its own is plain.
    std::size_t first_text = 0;
    bool has_plain = false;
};

struct Delimiter {
    std::size_t begin = 0;
    std::size_t end = 0;
    // The place of its multipart among those that are open.
    std::size_t depth = 0;
    bool closes = false;
};

// Moves to the next line that begins with "--", `at` itself where one does.
bool find_hyphens(std::string_view bytes, std::size_t& at) {
    // Hyphens are rare in what is long: Base64 has none.
    for (; at < bytes.size(); ++at) {
        const void* const found = std::memchr(bytes.data() + at, '-', bytes.size() - at);
        if (found == nullptr) return false;
        at = static_cast<std::size_t>(static_cast<const char*>(found) - bytes.data());
        const bool begins_line = at == 0 || bytes[at - 1] == '\n';
        if (begins_line && bytes.substr(at).starts_with("--")) return true;
    }
    return false;
}

class Reader {
  public:
    Reader(std::string_view bytes, const ports::CodePage& code_page)
        : bytes_(bytes), code_page_(code_page) {}

    Message read();

  private:
    void read_header_of_message();
    // The delimiter that `line`, which begins with "--", is.
    std::optional<Delimiter> delimiter(std::string_view line) const;
    std::optional<Delimiter> next_delimiter(std::size_t at) const;
    // Takes one part whose body begins at `at_`, its header at `begin`; false behind the last part.
    bool read_part(const Header& header, std::size_t begin);
    bool read_multipart(const ParameterizedValue& type, std::size_t begin);
    bool enter(const ParameterizedValue& type);
    // From `begin` to the delimiter, whose own the line end before it is (RFC 2046, section 5.1.1).
    std::string_view bytes_before(const std::optional<Delimiter>& found, std::size_t begin) const;
    void add_epilogue(std::string_view epilogue, std::string_view boundary);
    void add(Part part, bool is_attachment);
    void add_text(Part part);
    // Moves to the next part's header; false behind the last part.
    bool next_part(std::optional<Delimiter> found);

    std::string_view bytes_;
    const ports::CodePage& code_page_;
    std::size_t at_ = 0;
    std::vector<Multipart> open_;
    Message message_;
};

std::optional<Delimiter> Reader::delimiter(std::string_view line) const {
    const std::string_view full = trimmed(line.substr(2));
    const std::string_view closed =
        full.ends_with("--") ? full.substr(0, full.size() - 2) : std::string_view();
    // The innermost of equal ones. A line that closes one boundary may be another, longer one.
    for (std::size_t i = open_.size(); i-- > 0;) {
        if (full == open_[i].boundary) return Delimiter{0, 0, i, false};
        if (!closed.empty() && closed == open_[i].boundary) return Delimiter{0, 0, i, true};
    }
    return std::nullopt;
}

std::optional<Delimiter> Reader::next_delimiter(std::size_t at) const {
    if (open_.empty()) return std::nullopt;
    while (find_hyphens(bytes_, at)) {
        const std::size_t begin = at;
        if (auto delimiter = this->delimiter(take_line(bytes_, at))) {
            delimiter->begin = begin;
            delimiter->end = at;
            return delimiter;
        }
    }
    return std::nullopt;
}

bool Reader::enter(const ParameterizedValue& type) {
    const Parameter* const boundary = type.find("boundary");
    const std::string_view value = boundary == nullptr ? "" : trimmed(boundary->value);
    if (value.empty()) return false;
    open_.push_back(
        {std::string(value), type.value == "multipart/alternative", message_.texts.size(), false});
    return true;
}

// The name of a parameter that may be in the words of RFC 2047 or in the character set of RFC 2231.
base::Text name_in(const ParameterizedValue& value, std::string_view parameter,
                   const ports::CodePage& code_page) {
    const Parameter* const found = value.find(parameter);
    if (found == nullptr) return {};
    if (!found->charset.empty()) return decode_text(found->value, found->charset, code_page);
    return decode_words(found->value, code_page);
}

std::string_view Reader::bytes_before(const std::optional<Delimiter>& found,
                                      std::size_t begin) const {
    std::size_t end = found ? found->begin : bytes_.size();
    if (found && end > begin) --end;
    if (found && end > begin && bytes_[end - 1] == '\r') --end;
    return bytes_.substr(begin, end - begin);
}

bool Reader::read_multipart(const ParameterizedValue& type, std::size_t begin) {
    if (enter(type)) {
        // Before it stands a text for readers that know no multiparts.
        const std::optional<Delimiter> first = next_delimiter(at_);
        if (first && first->depth + 1 == open_.size() && !first->closes) return next_part(first);
        open_.pop_back();
    }
    if (open_.empty()) {
        message_.is_taken_apart = false;
        return false;
    }
    const std::optional<Delimiter> found = next_delimiter(at_);
    message_.files.push_back({bytes_before(found, begin), {}, "message/rfc822", {}, {}, false});
    return next_part(found);
}

bool Reader::read_part(const Header& header, std::size_t begin) {
    const ParameterizedValue type =
        parse_parameters(header.first("Content-Type").value_or(std::string()));
    if (type.value.starts_with("multipart/")) return read_multipart(type, begin);
    const std::optional<Delimiter> found = next_delimiter(at_);
    const ParameterizedValue disposition =
        parse_parameters(header.first("Content-Disposition").value_or(std::string()));
    Part part;
    part.body = bytes_before(found, at_);
    part.encoding = transfer_encoding(
        parse_parameters(header.first("Content-Transfer-Encoding").value_or(std::string())).value);
    part.type = type.value.find('/') != std::string::npos ? type.value : "text/plain";
    if (const Parameter* const charset = type.find("charset")) part.charset = charset->value;
    const Parameter* const format = type.find("format");
    part.space_stuffed = format != nullptr && same_name(format->value, "flowed");
    part.file_name = name_in(disposition, "filename", code_page_);
    if (part.file_name.empty()) part.file_name = name_in(type, "name", code_page_);
    add(std::move(part), disposition.value == "attachment");
    return next_part(found);
}

void Reader::add(Part part, bool is_attachment) {
    const bool is_text = part.type == "text/plain" || part.type == "text/html";
    if (is_text && !is_attachment && part.file_name.empty()) {
        add_text(std::move(part));
    } else {
        message_.files.push_back(std::move(part));
    }
}

void Reader::add_text(Part part) {
    // Nothing between two boundaries, or the blank text that some programs put beside their HTML.
    constexpr base::TextView blanks = u" \t\r\n\u00A0";
    if (text_of(part, code_page_).find_first_not_of(blanks) == base::Text::npos) return;
    const bool plain = part.type == "text/plain";
    for (Multipart& multipart : open_) {
        if (!multipart.alternative) continue;
        if (!plain && multipart.has_plain) return;
        if (plain && !multipart.has_plain) {
            // HTML that stood before it.
            message_.texts.resize(std::min(multipart.first_text, message_.texts.size()));
            multipart.has_plain = true;
        }
    }
    message_.texts.push_back(std::move(part));
}

void Reader::add_epilogue(std::string_view epilogue, std::string_view boundary) {
    for (std::size_t at = 0; find_hyphens(epilogue, at);) {
        if (trimmed(take_line(epilogue, at).substr(2)) != boundary) continue;
        message_.files.push_back({epilogue, {}, "text/plain", {}, {}, false});
        return;
    }
}

bool Reader::next_part(std::optional<Delimiter> found) {
    while (found) {
        at_ = found->end;
        // What is further inside has ended without saying so.
        open_.resize(found->depth + 1);
        if (!found->closes) return true;
        const std::string boundary = std::move(open_.back().boundary);
        open_.pop_back();
        found = next_delimiter(at_);
        add_epilogue(bytes_before(found, at_), boundary);
    }
    return false;
}

void Reader::read_header_of_message() {
    const auto read = [this](std::string_view end) {
        at_ = 0;
        message_.header = read_header(bytes_, at_, HeaderNoise::left_out,
                                      [&](std::string_view line) { return line == end; });
    };
    read({});
    // Without an empty line behind it, it goes as far as the first delimiter.
    const ParameterizedValue type =
        parse_parameters(message_.header.first("Content-Type").value_or(std::string()));
    if (const Parameter* const boundary = type.find("boundary")) read("--" + boundary->value);
    if (message_.header.fields.empty()) at_ = 0;
    message_.body = bytes_.substr(at_);
    message_.header_text = trimmed(bytes_.substr(0, at_));
}

Message Reader::read() {
    read_header_of_message();
    message_.is_taken_apart = !message_.header.fields.empty();
    Header header = message_.header;
    std::size_t begin = 0;
    while (message_.is_taken_apart && read_part(header, begin)) {
        message_.is_taken_apart = open_.size() <= deepest_nesting &&
                                  message_.texts.size() + message_.files.size() <= most_parts;
        begin = at_;
        header = read_header(bytes_, at_, HeaderNoise::begins_body,
                             [this](std::string_view line) { return delimiter(line).has_value(); });
    }
    if (!message_.is_taken_apart) {
        message_.texts.clear();
        message_.files.clear();
    }
    return std::move(message_);
}

void undo_space_stuffing(base::Text& text) {
    base::Text out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool stuffed = text[i] == u' ' && (i == 0 || text[i - 1] == u'\n');
        if (!stuffed) out += text[i];
    }
    text = std::move(out);
}

}  // namespace

Message parse_message(std::string_view bytes, const ports::CodePage& code_page) {
    return Reader(bytes, code_page).read();
}

base::Text text_of(const Part& part, const ports::CodePage& code_page) {
    base::Text text;
    if (part.encoding == TransferEncoding::identity) {
        text = decode_text(part.body, part.charset, code_page);
    } else {
        const base::Bytes bytes = decode_body(part.encoding, part.body);
        text = decode_text(base::chars_of(bytes), part.charset, code_page);
    }
    if (part.space_stuffed) undo_space_stuffing(text);
    return text;
}

}  // namespace tavrix::mail::mime
