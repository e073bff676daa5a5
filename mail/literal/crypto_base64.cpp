#include "mail/literal/crypto_base64.h"

#include "base/base64.h"
#include "base/base64_blocks.h"
#include "base/error.h"

namespace tavrix::mail {
namespace {

using base::AutomationError;
using base::ErrorNumber;

// wincrypt.h: CRYPT_STRING_NOCRLF, CRYPT_STRING_NOCR.
constexpr std::uint32_t no_line_ends = 0x40000000;
constexpr std::uint32_t line_feed_only = 0x80000000;

// winerror.h
constexpr std::uint32_t error_invalid_data = 13;
constexpr std::uint32_t error_invalid_parameter = 87;

constexpr std::size_t letters_in_line = 64;

[[noreturn]] void fail(ErrorNumber number, base::TextView source, base::TextView what,
                       std::uint32_t error) {
    throw AutomationError(number, base::Text(source),
                          base::Text(what) + u" failed, error " + base::to_decimal(error));
}

bool is_space(char16_t c) {
    return c == u' ' || c == u'\t' || c == u'\r' || c == u'\n';
}

// True when the "=" that an incomplete block needs stand at the beginning of `text`.
bool is_padded(base::TextView text, int letters) {
    int missing = letters == 0 ? 0 : 4 - letters;
    for (std::size_t i = 0; i < text.size() && missing > 0; ++i) {
        if (is_space(text[i])) continue;
        if (text[i] != u'=') return false;
        --missing;
    }
    return missing == 0;
}

}  // namespace

CryptoBase64::CryptoBase64(const ports::SystemVersion& system)
    : os_version_(system.major * 100 + system.minor) {
    constexpr base::TextView source = u"CryptoBase64 Initialize";
    if (system.error != 0)
        fail(ErrorNumber::version_unknown, source, u"GetVersionEx", system.error);
    if (system.platform != 2) {
        throw AutomationError(ErrorNumber::not_windows_nt, base::Text(source),
                              u"CryptoAPI is only available on NT-based OSs");
    }
}

std::int32_t CryptoBase64::Base64Format() const noexcept {
    return flags_ == no_line_ends ? 1 : flags_ == line_feed_only ? 2 : 0;
}

void CryptoBase64::set_Base64Format(std::int32_t format) {
    constexpr base::TextView source = u"CryptoBase64.Base64Format";
    if (format == 1 && os_version_ < 501) {
        throw AutomationError(ErrorNumber::format_needs_xp, base::Text(source),
                              u"This format is only supported in Windows XP/2003 and later");
    }
    if (format == 2 && os_version_ < 600) {
        throw AutomationError(ErrorNumber::format_needs_vista, base::Text(source),
                              u"This format is only supported in Windows Vista/2008 and later");
    }
    flags_ = format == 1 ? no_line_ends : format == 2 ? line_feed_only : 0;
}

base::Bytes CryptoBase64::Decode(base::TextView text) const {
    base::Bytes bytes(text.size() / 4 * 3 + 3);
    std::uint8_t* out = bytes.data();
    std::uint32_t block = 0;
    int letters = 0;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (letters == 0) at += base::decode_base64_blocks(text.substr(at), out);
        if (at >= text.size()) break;
        if (is_space(text[at])) continue;
        const std::uint32_t value = base::base64_value(text[at]);
        if (value < 64) {
            block = block << 6 | value;
            if (++letters < 4) continue;
            for (int shift = 16; shift >= 0; shift -= 8)
                *out++ = static_cast<std::uint8_t>(block >> shift);
            block = 0;
            letters = 0;
            continue;
        }
        if (text[at] == u'=' && is_padded(text.substr(at), letters)) break;
        fail(ErrorNumber::base64_not_decoded, u"CryptoBase64.Decode", u"CryptStringToBinary",
             error_invalid_data);
    }
    if (letters > 0) {
        block <<= 6 * (4 - letters);
        *out++ = static_cast<std::uint8_t>(block >> 16);
        if (letters == 3) *out++ = static_cast<std::uint8_t>(block >> 8);
    }
    bytes.resize(static_cast<std::size_t>(out - bytes.data()));
    return bytes;
}

base::Text CryptoBase64::Encode(base::ByteView bytes) const {
    if (bytes.empty()) {
        fail(ErrorNumber::base64_not_encoded, u"CryptoBase64.Encode", u"CryptBinaryToString",
             error_invalid_parameter);
    }
    const std::string letters = base::base64_encode(bytes);
    if (flags_ == no_line_ends) return {letters.begin(), letters.end()};
    const base::TextView line_end = flags_ == line_feed_only ? u"\n" : u"\r\n";
    base::Text text;
    text.reserve(letters.size() + (letters.size() / letters_in_line + 1) * line_end.size());
    for (std::size_t at = 0; at < letters.size(); at += letters_in_line) {
        const std::string_view line = std::string_view(letters).substr(at, letters_in_line);
        text.append(line.begin(), line.end()).append(line_end);
    }
    return text;
}

}  // namespace tavrix::mail
