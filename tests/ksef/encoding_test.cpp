#include "ksef/encoding.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>

#include "base/error.h"
#include "ksef/client.h"
#include "ksef/json.h"
#include "ports/native/adapters.h"

namespace tavrix::ksef {
namespace {

using base::Text;

TEST(ExtractToken, CutsAtTheFirstCommaAndKeepsWhatFollowsALastMember) {
    constexpr std::pair<const char16_t*, const char16_t*> cases[] = {
        {uR"({"token":"abc"})", u"abc}"},
        {uR"({"TOKEN": "abc", "x":1})", u"abc"},
        {uR"({"access_token":"abc","token_type":"Bearer"})", u"abc"},
        {uR"({"access_token":"a","token":"b","z":1})", u"b"},
        {uR"({"token" "abc"})", u""},
        {u"<html>\"token\"", u""},
    };
    for (const auto& [response, token] : cases)
        EXPECT_EQ(extract_token(response), token) << base::to_utf8(response);
}

TEST(ExtractKeyBits, KnowsOneSizeOnly) {
    EXPECT_EQ(extract_key_bits(u"<k><bits n=\"2160\">\r\n MII \rB\n</bits></k>"), u"MIIB");
    EXPECT_EQ(extract_key_bits(u"<k><bits n=\"2048\">MII</bits></k>"), u"");
    EXPECT_EQ(extract_key_bits(u"<k><BITS n=\"2160\">MII</BITS></k>"), u"");
}

TEST(TimestampToUnixMs, CountsTheFirstThreeDigitsAsMilliseconds) {
    constexpr std::pair<const char16_t*, const char16_t*> cases[] = {
        {u"2025-07-11T12:23:56.9994302+00:00", u"1752236636999"},
        {u"2025-07-11T14:23:56.5001+02:00", u"1752236636500"},
    };
    for (const auto& [timestamp, milliseconds] : cases) {
        EXPECT_EQ(timestamp_to_unix_ms(timestamp), milliseconds) << base::to_utf8(timestamp);
    }
    for (const char16_t* bad :
         {u"", u"2025-07-11T12:23:56+00:00", u"2025-07-11T12:23:56.12Z", u"11.07.2025 12:23",
          u"2025-07-11T25:23:56.000Z", u"2025-07-11T12:23:56.000+2"}) {
        EXPECT_THROW(timestamp_to_unix_ms(bad), base::AutomationError) << base::to_utf8(bad);
    }
}

TEST(Conversions, TextGoesThroughTheSystemsCodePage) {
    const auto xml = ports::make_native_xml();
    const auto code_page = ports::make_native_code_page();
    EXPECT_EQ(base64_of_ansi(*xml, *code_page, u"\u4E00"), u"Pw==");
    EXPECT_EQ(ansi_of_base64(*xml, *code_page, u"v/Oz\r\n dw=="), u"żółw");
    EXPECT_THROW(ansi_of_base64(*xml, *code_page, u"to nie jest base64!"), base::AutomationError);
    EXPECT_EQ(base64_of_ansi(*xml, *code_page, Text(200, u'a')).find(u'\n'), Text::npos);
}

// A system whose code page is UTF-8.
struct Utf8CodePage final : ports::CodePage {
    std::optional<std::uint8_t> byte_of(char16_t) const override { return std::nullopt; }
    base::Bytes to_bytes(base::TextView text) const override {
        const std::string bytes = base::to_utf8(text);
        return {bytes.begin(), bytes.end()};
    }
    Text to_text(base::ByteView bytes) const override {
        return base::from_utf8(base::chars_of(bytes));
    }
    bool is_single_byte() const override { return false; }
};

TEST(InvoiceBytes, AreTheSameHoweverTheHostReadThem) {
    const auto native = ports::make_native_code_page();
    const Utf8CodePage utf8;
    const std::string plain = "<a>Zażółć \xC2\x81\xC2\x98\n\r</a>\n";
    const base::Bytes expected(plain.begin(), plain.end());
    const std::string crlf = "<a>Zażółć \xC2\x81\xC2\x98\r\n\r</a>\r\n";
    for (const ports::CodePage& code_page :
         {std::cref(*native), std::cref<ports::CodePage>(utf8)}) {
        for (const std::string& file : {plain, crlf, "\xEF\xBB\xBF" + crlf}) {
            const base::Bytes bytes(file.begin(), file.end());
            EXPECT_EQ(invoice_bytes(code_page, code_page.to_text(bytes)), expected) << "decoded";
            EXPECT_EQ(invoice_bytes(code_page, Text(bytes.begin(), bytes.end())), expected)
                << "read as Latin-1";
        }
    }
    // The Baltic page has this one elsewhere; in the UTF-8 of "ø" it is a byte of its own.
    struct BalticCodePage final : ports::CodePage {
        std::optional<std::uint8_t> byte_of(char16_t c) const override {
            return c == 0xB8 ? std::optional<std::uint8_t>(0x8F) : std::nullopt;
        }
        base::Bytes to_bytes(base::TextView) const override { return {}; }
        Text to_text(base::ByteView) const override { return {}; }
    };
    EXPECT_EQ(invoice_bytes(BalticCodePage(), u"\u00C3\u00B8"), base::Bytes({0xC3, 0xB8}));
    EXPECT_EQ(invoice_bytes(BalticCodePage(), u"\u00B8"), base::Bytes({0x8F}));
    const Text decoded = u"<a>\u00F3\u00BF</a>";
    EXPECT_EQ(invoice_bytes(utf8, decoded), utf8.to_bytes(decoded)) << "no UTF-8 as Latin-1";
    EXPECT_THROW(invoice_bytes(utf8, Text(u"<a>\xD800</a>")), base::AutomationError);
}

TEST(PathSegment, StaysOneSegmentWhateverAServerGave) {
    EXPECT_EQ(path_segment("20261121-AB_c.~"), "20261121-AB_c.~");
    EXPECT_EQ(path_segment("../a?b#ż%"), "..%2Fa%3Fb%23%C5%BC%25");
    EXPECT_EQ(path_segment("."), "%2E");
}

TEST(SecretAnswer, GivesTheTokensApart) {
    constexpr std::tuple<const char*, const char*, const char*> answers[] = {
        {R"({"r":"R","x":{"token":"U"},"y":["}",{"token":"V"}], "a" : { "token" : "T" } })", "T",
         "R"},
        {R"({"a":{"token":"T1"},"a":{"token":"T2"},"r":"R"})", "T2", "R"},
        {R"({"a":{"token":"T\u002B\/\"1"},"r":"R"})", "T+/\"1", "R"},
        {R"({"r":"Q","a":{"token":17},"r":"R"})", "17", "R"},
        {R"({"a":{"token":"T"},"r":"R")", "", ""},
        {"", "", ""},
    };
    for (const auto& [text, token, rest] : answers) {
        base::SecretUtf8 body{std::string_view(text)};
        const SecretAnswer answer = parse_secret_json(body, {"a.token"});
        EXPECT_EQ(answer.secrets.at(0).view(), token) << text;
        EXPECT_EQ(utf8_at(answer.rest, "r"), rest) << text;
    }
}

TEST(JsonReading, GivesEmptyTextsForWhatIsNotThere) {
    const Json answer = parse_json(R"({"code":200,"ok":true,"list":[{"n":"a"},{"n":"b"}]})");
    constexpr std::pair<const char*, const char*> paths[] = {
        {"code", "200"}, {"ok", "true"},  {"list[1].n", "b"}, {"list[0]", R"({"n":"a"})"},
        {"code.x", ""},  {"code[0]", ""}, {"list[2].n", ""},  {"list.n", ""},
    };
    for (const auto& [path, text] : paths) EXPECT_EQ(utf8_at(answer, path), text) << path;
    EXPECT_TRUE(parse_json("<html>").is_null());
    const auto nested = [](int levels) {
        return parse_json(std::string(levels, '[') + std::string(levels, ']'));
    };
    EXPECT_FALSE(nested(64).is_null());
    EXPECT_TRUE(nested(65).is_null());
    EXPECT_TRUE(parse_json(std::string(1'000'000, '[')).is_null()) << "a hostile depth";
    EXPECT_EQ(utf8_at(parse_json(R"({"a":"[[[[\"[["})"), "a"), "[[[[\"[[");
}

// The best of three: another program may have the processor meanwhile.
std::chrono::nanoseconds time_to_parse(std::size_t size) {
    std::string body = "{\"r\":0";
    for (int i = 0; body.size() < size; ++i) body += ",\"" + std::to_string(i) + "\":1";
    body += '}';
    std::chrono::nanoseconds best = std::chrono::hours(1);
    for (int run = 0; run < 3; ++run) {
        const auto begin = std::chrono::steady_clock::now();
        EXPECT_EQ(parse_json(body).at("r"), 0);
        best = std::min<std::chrono::nanoseconds>(best, std::chrono::steady_clock::now() - begin);
    }
    return best;
}

TEST(JsonReading, TakesNoLongerForManyMembers) {
    // Looking at each member for each would take 64 times as long for eight times as many.
    EXPECT_LT(time_to_parse(400'000), 24 * time_to_parse(50'000));
}

}  // namespace
}  // namespace tavrix::ksef
