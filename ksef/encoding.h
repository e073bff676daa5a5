#pragma once

#include "base/text.h"
#include "ports/code_page.h"
#include "ports/crypto.h"
#include "ports/xml.h"

/// The conversions behind KseF_comm's small public methods. Pure functions; those that can fail
/// throw base::AutomationError.
namespace tavrix::ksef {

/// The value behind the first member "token", else "access_token" (letter case ignored), cut at the
/// first comma. A text search and no JSON reading: a token that is the last member of its object
/// keeps the closing brace, as hosts have come to expect. "" when there is no such member.
base::Text extract_token(const base::Text& response);

/// What stands in the element `bits n="2160"`, without white space; "" for any other key size.
base::Text extract_key_bits(const base::Text& xml);

/// Milliseconds since 1970-01-01 UTC of an ISO 8601 timestamp with a fraction and an offset,
/// decimal. The first three digits of the fraction count as milliseconds, nothing is rounded.
/// Throws for a text without a fraction or that is no timestamp.
base::Text timestamp_to_unix_ms(const base::Text& timestamp);

/// The bytes of a Base64 text; none when it is not Base64.
base::Bytes base64_to_bytes(const base::Text& base64);

/// The UTF-8 bytes of the text, although the public method's name speaks of hexadecimal digits: the
/// encoding it has always asked for is "UTF-8".
base::Bytes hex_string_to_bytes(const base::Text& text);

/// Base64 of the text's bytes in the system's code page, without line breaks.
base::Text base64_of_ansi(ports::Xml& xml, const ports::CodePage& code_page,
                          const base::Text& text);
/// The other way round.
base::Text ansi_of_base64(ports::Xml& xml, const ports::CodePage& code_page,
                          const base::Text& base64);

/// Base64 of the SHA-256 digest: 44 characters.
std::string sha256_base64(ports::Crypto& crypto, base::ByteView data);

/// The bytes of an invoice that a host read one byte per character: without the byte-order mark,
/// line ends LF. Throws base::AutomationError for a text that is no bytes; the service would take
/// an invoice with other characters in their place.
base::Bytes invoice_bytes(const ports::CodePage& code_page, base::TextView xml_content);

}  // namespace tavrix::ksef
