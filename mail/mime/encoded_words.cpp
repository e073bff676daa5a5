#include "mail/mime/encoded_words.h"

#include <optional>

#include "mail/mime/charset.h"
#include "mail/mime/header.h"
#include "mail/mime/hex.h"
#include "mail/mime/transfer_encoding.h"

namespace tavrix::mail::mime {
namespace {

struct Word {
    std::string_view charset;
    bool base64 = false;
    std::string_view content;
    /// Behind the word in the text it stands in.
    std::size_t end = 0;
};

// "=?charset?B?content?=" at the place of its "=?".
std::optional<Word> word_at(std::string_view value, std::size_t at) {
    const std::size_t charset = at + 2;
    const std::size_t encoding = value.find('?', charset);
    if (encoding == std::string_view::npos || encoding == charset) return std::nullopt;
    if (encoding + 2 >= value.size() || value[encoding + 2] != '?') return std::nullopt;
    // A character set has no blanks; what has some are two question marks of a sentence.
    const std::string_view name = value.substr(charset, encoding - charset);
    if (name.find(' ') != std::string_view::npos) return std::nullopt;
    const char kind = value[encoding + 1];
    const bool base64 = kind == 'B' || kind == 'b';
    if (!base64 && kind != 'Q' && kind != 'q') return std::nullopt;
    const std::size_t content = encoding + 3;
    const std::size_t end = value.find("?=", content);
    if (end == std::string_view::npos) return std::nullopt;
    return Word{name, base64, value.substr(content, end - content), end + 2};
}

// RFC 2047, section 4.2: "_" is a blank. Blanks themselves, which it forbids, stand for themselves.
std::string decode_q(std::string_view content) {
    std::string out;
    for (std::size_t i = 0; i < content.size(); ++i) {
        const int byte = content[i] == '=' ? hex_byte(content, i + 1) : -1;
        out += byte >= 0 ? static_cast<char>(byte) : content[i] == '_' ? ' ' : content[i];
        if (byte >= 0) i += 2;
    }
    return out;
}

// What a word hides in it must not begin a line or steer a terminal: control characters are blanks,
// several in a row one.
base::Text without_controls(base::TextView text) {
    base::Text out;
    bool after_control = false;
    for (const char16_t c : text) {
        const bool is_control = c < 0x20 || (c >= 0x7F && c <= 0x9F);
        if (!is_control || !after_control) out += is_control ? u' ' : c;
        after_control = is_control;
    }
    return out;
}

// Bytes of neighbouring words that are still to be decoded.
class Pending {
  public:
    Pending(base::Text& text, const ports::CodePage& code_page)
        : text_(text), code_page_(code_page) {}

    void add(const Word& word) {
        if (!same_name(word.charset, charset_) || word.base64 != base64_) flush();
        charset_ = word.charset;
        base64_ = word.base64;
        if (base64_) {
            const base::Bytes bytes = decode_body(TransferEncoding::base64, word.content);
            bytes_ += base::chars_of(bytes);
        } else {
            bytes_ += decode_q(word.content);
        }
    }
    void flush() {
        if (!bytes_.empty()) text_ += without_controls(decode_text(bytes_, charset_, code_page_));
        bytes_.clear();
    }

  private:
    base::Text& text_;
    const ports::CodePage& code_page_;
    std::string_view charset_;
    bool base64_ = false;
    std::string bytes_;
};

}  // namespace

base::Text decode_words(std::string_view value, const ports::CodePage& code_page) {
    base::Text text;
    Pending words(text, code_page);
    bool after_word = false;
    // Where the text that is no word begins.
    std::size_t plain = 0;
    std::size_t at = 0;
    // Without an end in the rest of the value nothing further is a word, and none is looked for.
    std::size_t last_end = value.rfind("?=");
    if (last_end == std::string_view::npos) last_end = 0;
    while ((at = value.find("=?", at)) != std::string_view::npos && at < last_end) {
        const std::optional<Word> word = word_at(value, at);
        if (!word) {
            at += 2;
            continue;
        }
        const std::string_view between = value.substr(plain, at - plain);
        if (!after_word || !trimmed(between).empty()) {
            words.flush();
            text += decode_text(between, "", code_page);
        }
        words.add(*word);
        after_word = true;
        plain = at = word->end;
    }
    words.flush();
    return text += decode_text(value.substr(plain), "", code_page);
}

}  // namespace tavrix::mail::mime
