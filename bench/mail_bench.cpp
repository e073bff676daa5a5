// Taking messages apart and decoding all of their parts, beside GMime on the same bytes: one
// message of 25 MB with three attachments, and ten thousand of 5 KB; and the time of 1 to 50 MB.
#include <gmime/gmime.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <random>

#include "base/base64.h"
#include "mail/mime/encoded_words.h"
#include "mail/mime/message.h"
#include "ports/native/adapters.h"

namespace {

using namespace tavrix;

// Attachments together have about `bytes` in Base64.
std::string message_of(std::size_t bytes, int attachments) {
    std::mt19937 random(1);
    std::string message =
        "From: =?utf-8?Q?=C5=81ukasz?= <a@firma.example>\r\nTo: b@firma.example\r\n"
        "Subject: =?utf-8?Q?Faktura_za_pa=C5=BAdziernik?=\r\nDate: Sun, 22 Nov 2026 10:00:00 "
        "+0100\r\n"
        "Message-ID: <1@firma.example>\r\nMIME-Version: 1.0\r\n"
        "Content-Type: multipart/mixed; boundary=\"----=_Part\"\r\n\r\n------=_Part\r\n"
        "Content-Type: text/plain; charset=utf-8\r\nContent-Transfer-Encoding: "
        "quoted-printable\r\n\r\n";
    for (int line = 0; line < 10; ++line)
        message += "W za=C5=82=C4=85czeniu faktura za pa=C5=BAdziernik.\r\n";
    for (int i = 0; i < attachments; ++i) {
        message += "------=_Part\r\nContent-Type: application/pdf; name=\"FV " + std::to_string(i) +
                   ".pdf\"\r\nContent-Transfer-Encoding: base64\r\n"
                   "Content-Disposition: attachment; filename=\"FV " +
                   std::to_string(i) + ".pdf\"\r\n\r\n";
        base::Bytes content(bytes / static_cast<std::size_t>(attachments) / 78 * 57);
        for (std::uint8_t& byte : content) byte = static_cast<std::uint8_t>(random());
        const std::string letters = base::base64_encode(content);
        for (std::size_t at = 0; at < letters.size(); at += 76)
            message += letters.substr(at, 76) + "\r\n";
    }
    return message + "------=_Part--\r\n";
}

// The number of decoded bytes, so that both are seen to have done the same.
std::size_t decode(const std::string& bytes) {
    static const auto code_page = ports::make_native_code_page();
    const auto message = mail::mime::parse_message(bytes, *code_page);
    std::size_t size = 0;
    for (const auto& part : message.texts) {
        size += base::to_utf8(mail::mime::text_of(part, *code_page)).size();
    }
    for (const auto& part : message.files) {
        size += mail::mime::decode_body(part.encoding, part.body).size();
    }
    if (mail::mime::decode_words(message.header.first("Subject").value(), *code_page).empty())
        std::abort();
    return size;
}

void decode_with_gmime(GMimeObject*, GMimeObject* part, gpointer size) {
    if (!GMIME_IS_PART(part)) return;
    if (GMIME_IS_TEXT_PART(part)) {
        char* text = g_mime_text_part_get_text(GMIME_TEXT_PART(part));
        *static_cast<std::size_t*>(size) += std::string_view(text).size();
        g_free(text);
        return;
    }
    GMimeStream* memory = g_mime_stream_mem_new();
    g_mime_data_wrapper_write_to_stream(g_mime_part_get_content(GMIME_PART(part)), memory);
    *static_cast<std::size_t*>(size) += static_cast<std::size_t>(g_mime_stream_length(memory));
    g_object_unref(memory);
}

std::size_t gmime(const std::string& bytes) {
    GMimeStream* stream = g_mime_stream_mem_new_with_buffer(bytes.data(), bytes.size());
    GMimeParser* parser = g_mime_parser_new_with_stream(stream);
    GMimeMessage* message = g_mime_parser_construct_message(parser, nullptr);
    std::size_t size = 0;
    g_mime_message_foreach(message, decode_with_gmime, &size);
    if (g_mime_message_get_subject(message) == nullptr) std::abort();
    g_object_unref(message);
    g_object_unref(parser);
    g_object_unref(stream);
    return size;
}

double seconds_of(const auto& work) {
    double best = 1e9;
    for (int round = 0; round < 5; ++round) {
        const auto begin = std::chrono::steady_clock::now();
        work();
        const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
        best = std::min(best, took.count());
    }
    return best;
}

}  // namespace

int main() {
    g_mime_init();
    const std::string large = message_of(25'000'000, 3);
    const std::string small = message_of(4'000, 1);
    // GMime leaves lines as they end, and so do we.
    if (decode(large) != gmime(large) || decode(small) != gmime(small)) {
        std::printf("the two do not decode the same: %zu and %zu bytes\n", decode(large),
                    gmime(large));
        return 1;
    }
    const double megabytes = static_cast<double>(large.size()) / 1e6;
    const double ours = seconds_of([&] { decode(large); });
    const double theirs = seconds_of([&] { gmime(large); });
    std::printf("message of %.0f MB, three attachments: %.0f MB/s; GMime %.0f MB/s; ratio %.2f\n",
                megabytes, megabytes / ours, megabytes / theirs, theirs / ours);
    constexpr int count = 10'000;
    const auto many = [&](auto one) {
        return seconds_of([&] {
            for (int i = 0; i < count; ++i) one(small);
        });
    };
    const double ours_small = many(decode);
    const double theirs_small = many(gmime);
    std::printf("messages of %zu bytes: %.0f/s; GMime %.0f/s; ratio %.2f\n", small.size(),
                count / ours_small, count / theirs_small, theirs_small / ours_small);
    for (const std::size_t size : {1, 10, 50}) {
        const std::string message = message_of(size * 1'000'000, 3);
        std::printf("%2zu MB: %.1f ms\n", size, 1000 * seconds_of([&] { decode(message); }));
    }
    return 0;
}
