#include "ksef/encoding.h"

#include "base/base64.h"
#include "base/date_time.h"
#include "base/error.h"

namespace tavrix::ksef {
namespace {

using base::Text;
using base::TextView;

constexpr auto npos = TextView::npos;

[[noreturn]] void raise(base::ErrorNumber number, TextView description) {
    throw base::AutomationError(number, u"KseF_comm.TimestampToUnixMs", Text(description));
}

bool is_digit(char16_t c) {
    return c >= u'0' && c <= u'9';
}

// "+HH:MM", "-HH:MM", "Z" or nothing, which reads as UTC. Seconds east of Greenwich.
int offset_seconds(TextView offset) {
    if (offset.empty() || offset == u"Z" || offset == u"z") return 0;
    const bool shaped = offset.size() == 6 && (offset[0] == u'+' || offset[0] == u'-') &&
                        is_digit(offset[1]) && is_digit(offset[2]) && offset[3] == u':' &&
                        is_digit(offset[4]) && is_digit(offset[5]);
    if (!shaped)
        raise(base::ErrorNumber::type_mismatch, u"Niepoprawny znacznik czasu: przesunięcie strefy");
    const int hours = (offset[1] - u'0') * 10 + (offset[2] - u'0');
    const int minutes = (offset[4] - u'0') * 10 + (offset[5] - u'0');
    return (offset[0] == u'-' ? -60 : 60) * (hours * 60 + minutes);
}

std::int64_t unix_seconds(TextView timestamp) {
    constexpr std::size_t seconds_end = 19;  // YYYY-MM-DDTHH:MM:SS
    const auto moment = base::parse_date_time(timestamp.substr(0, seconds_end));
    if (!moment || timestamp.size() < seconds_end) {
        raise(base::ErrorNumber::type_mismatch, u"Niepoprawny znacznik czasu");
    }
    std::size_t at = seconds_end;
    if (at < timestamp.size() && timestamp[at] == u'.') {
        ++at;
        while (at < timestamp.size() && is_digit(timestamp[at])) ++at;
    }
    return base::days_from_civil(moment->year, moment->month, moment->day) * 86400 +
           moment->hour * 3600 + moment->minute * 60 + moment->second -
           offset_seconds(timestamp.substr(at));
}

}  // namespace

Text extract_token(const Text& response) {
    std::size_t member = base::find_case_blind(response, u"\"token\"");
    if (member == npos) member = base::find_case_blind(response, u"\"access_token\"");
    if (member == npos) return {};
    const std::size_t colon = response.find(u':', member);
    if (colon == npos) return {};
    const std::size_t quote = response.find(u'"', colon);
    if (quote == npos || response.find(u'"', quote + 1) == npos) return {};

    const TextView rest = base::trim(TextView(response).substr(colon + 1));
    const Text unquoted = base::remove_characters(rest, u"\"");
    return Text(base::trim(TextView(unquoted).substr(0, unquoted.find(u','))));
}

Text extract_key_bits(const Text& xml) {
    constexpr TextView opening = u"<bits n=\"2160\">";
    const std::size_t found = xml.find(opening);
    if (found == npos) return {};
    const std::size_t start = found + opening.size();
    const std::size_t end = xml.find(u"</bits>", start);
    if (end == npos) return {};
    return base::remove_characters(TextView(xml).substr(start, end - start), u"\r\n ");
}

Text timestamp_to_unix_ms(const Text& timestamp) {
    const auto pieces = base::split(timestamp, u'.');
    if (pieces.size() < 2)
        raise(base::ErrorNumber::subscript, u"Niepoprawny znacznik czasu: brak ułamka sekundy");
    const TextView fraction = TextView(pieces[1]).substr(0, 3);
    int milliseconds = 0;
    for (const char16_t c : fraction) {
        if (!is_digit(c))
            raise(base::ErrorNumber::type_mismatch, u"Niepoprawny znacznik czasu: ułamek sekundy");
        milliseconds = milliseconds * 10 + (c - u'0');
    }
    if (fraction.empty())
        raise(base::ErrorNumber::type_mismatch, u"Niepoprawny znacznik czasu: ułamek sekundy");
    return base::to_decimal(unix_seconds(timestamp) * 1000 + milliseconds);
}

base::Bytes base64_to_bytes(const Text& base64) {
    return base::base64_decode(base::to_utf8(base64)).value_or(base::Bytes{});
}

base::Bytes hex_string_to_bytes(const Text& text) {
    const std::string utf8 = base::to_utf8(text);
    return {utf8.begin(), utf8.end()};
}

Text base64_of_ansi(ports::Xml& xml, const ports::CodePage& code_page, const Text& text) {
    const Text lines =
        xml.base64_from_bytes(ports::DomDocument::version_3, u"base64", code_page.to_bytes(text));
    return base::remove_characters(base::replace_all(lines, u"\r\n", u""), u"\n");
}

Text ansi_of_base64(ports::Xml& xml, const ports::CodePage& code_page, const Text& base64) {
    return code_page.to_text(xml.bytes_from_base64(ports::DomDocument::version_3, u"tmp", base64));
}

std::string sha256_base64(ports::Crypto& crypto, base::ByteView data) {
    return base::base64_encode(crypto.sha256(data));
}

base::Bytes invoice_bytes(const ports::CodePage& code_page, TextView xml_content) {
    base::Bytes bytes = ports::bytes_one_per_character(code_page, xml_content);
    const bool is_marked = base::chars_of(bytes).starts_with("\xEF\xBB\xBF");
    std::size_t kept = 0;
    for (std::size_t i = is_marked ? 3 : 0; i < bytes.size(); ++i) {
        if (bytes[i] == '\r' && i + 1 < bytes.size() && bytes[i + 1] == '\n') continue;
        bytes[kept++] = bytes[i];
    }
    bytes.resize(kept);
    return bytes;
}

}  // namespace tavrix::ksef
