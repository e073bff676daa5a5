#pragma once

#include <optional>

#include "base/text.h"

namespace tavrix::ports {

/// The system's ANSI code page, 1250 on a Polish system, and the way in from others.
class CodePage {
  public:
    virtual ~CodePage() = default;

    /// Windows' own number of it.
    virtual std::uint32_t number() const { return 1250; }
    /// The byte of exactly this character, or nothing when the code page has none.
    virtual std::optional<std::uint8_t> byte_of(char16_t character) const = 0;
    /// Bytes of a text; a character outside the code page becomes the system's replacement ("?", or
    /// its best fit on Windows).
    virtual base::Bytes to_bytes(base::TextView text) const = 0;
    virtual base::Text to_text(base::ByteView bytes) const = 0;
    /// False for code pages such as 932 or 65001, where a character may take several bytes.
    virtual bool is_single_byte() const { return true; }
    /// The text of `bytes` in another code page, named by Windows' own number (28592 is
    /// ISO-8859-2). What is no character there becomes the system's replacement. Nothing when the
    /// system does not have that code page.
    virtual std::optional<base::Text> decode(std::uint32_t /*code_page*/,
                                             base::ByteView /*bytes*/) const {
        return std::nullopt;
    }
};

/// Gives back the bytes that a host read one per character. A character that the code page lacks
/// but that is no greater than U+00FF stands for the byte of its own value: hosts that read Latin-1
/// then come out right too, because no such character lies elsewhere in the Central and Western
/// European code pages, and the bytes a code page leaves undefined come back whatever the host made
/// of them. Where the code page is not one of single bytes, or has one of those characters
/// elsewhere (Baltic, Hebrew), a host that read a UTF-8 file as Latin-1 is known by its text, every
/// character of which is then a byte of well-formed UTF-8; one that read the file with the code
/// page holds decoded text, and its own conversion gives the bytes back.
///
/// Throws base::AutomationError that names the first character that is not a byte, or says that the
/// text does not come back.
base::Bytes bytes_one_per_character(const CodePage& code_page, base::TextView text);

}  // namespace tavrix::ports
