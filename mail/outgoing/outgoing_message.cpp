#include "mail/outgoing/outgoing_message.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>

#include "base/base64.h"
#include "base/error.h"
#include "mail/outgoing/attachment_header.h"
#include "mail/outgoing/header_field.h"
#include "mail/outgoing/plain_of_html.h"
#include "mail/outgoing/quoted_printable.h"

namespace tavrix::mail::outgoing {
namespace {

// RFC 2045, section 6.8: lines of 76 characters, which hold 57 bytes.
constexpr std::size_t bytes_of_line = 57;
constexpr std::size_t lines_at_once = 512;

std::string random_name(ports::Crypto& crypto) {
    constexpr char digits[] = "0123456789abcdef";
    std::array<std::uint8_t, 16> bytes{};
    crypto.fill_random(bytes);
    std::string name;
    for (const std::uint8_t byte : bytes) name += {digits[byte >> 4], digits[byte & 15]};
    return name;
}

// Begins as those of a common program, which even the plainest readers know.
std::string new_boundary(ports::Crypto& crypto) {
    return "----=_Tavrix_" + random_name(crypto);
}

// RFC 5322, section 3.3.
std::string date_of(const base::DateTime& local, std::chrono::minutes ahead) {
    constexpr const char* days[] = {"Thu", "Fri", "Sat", "Sun", "Mon", "Tue", "Wed"};
    constexpr const char* months[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                      "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    const auto day = base::days_from_civil(local.year, local.month, local.day);
    const int offset = static_cast<int>(std::abs(ahead.count()));
    char text[64];
    std::snprintf(text, sizeof text, "%s, %02d %s %04d %02d:%02d:%02d %c%02d%02d",
                  days[(day % 7 + 7) % 7], local.day, months[local.month - 1], local.year,
                  local.hour, local.minute, local.second, ahead.count() < 0 ? '-' : '+',
                  offset / 60, offset % 60);
    return text;
}

bool says_the_same(base::TextView sender, const Mailbox& from) {
    try {
        return parse_mailbox(sender).address == from.address;
    } catch (const base::AutomationError&) {
        return false;
    }
}

std::string header_of(const Draft& draft, const ComposingPorts& ports) {
    const base::DateTime now = ports.clock.now_local();
    const std::string_view domain = draft.from.domain();
    std::string header = "Date: " + date_of(now, ports.utc_offset(now)) + "\r\n";
    header += "Message-ID: <" + random_name(ports.crypto) + "@";
    header += domain.empty() ? "localhost" : domain;
    header += ">\r\n" + address_field("From", std::span(&draft.from, 1));
    if (!says_the_same(draft.sender, draft.from)) {
        header += address_or_text_field("Sender", draft.sender);
    }
    header += address_or_text_field("Reply-To", draft.reply_to);
    if (!draft.to.empty() || draft.cc.empty()) header += address_field("To", draft.to);
    if (!draft.cc.empty()) header += address_field("Cc", draft.cc);
    header += text_field("Subject", draft.subject);
    if (!draft.priority.empty()) header += text_field("X-Priority", draft.priority);
    header += address_or_text_field("Disposition-Notification-To", draft.receipt_to);
    return header + "MIME-Version: 1.0\r\n";
}

std::string text_part(std::string_view type, base::TextView text) {
    return "Content-Type: " + std::string(type) +
           "; charset=\"utf-8\"\r\nContent-Transfer-Encoding: quoted-printable\r\n\r\n" +
           (text.empty() ? "\r\n" : quoted_printable(text));
}

std::string multipart_header(std::string_view kind, const std::string& boundary) {
    return "Content-Type: multipart/" + std::string(kind) + "; boundary=\"" + boundary +
           "\"\r\n\r\n";
}

std::string texts_of(const Draft& draft, ports::Crypto& crypto) {
    if (draft.html.empty()) return text_part("text/plain", draft.body);
    const std::string boundary = new_boundary(crypto);
    const std::string delimiter = "--" + boundary + "\r\n";
    const base::Text plain = draft.body.empty() ? plain_of_html(draft.html) : draft.body;
    return multipart_header("alternative", boundary) + delimiter + text_part("text/plain", plain) +
           delimiter + text_part("text/html", draft.html) + "--" + boundary + "--\r\n";
}

base::TextView name_in(base::TextView path) {
    return path.substr(path.find_last_of(u"\\/") + 1);
}

std::uint64_t base64_size(std::uint64_t bytes) {
    const std::uint64_t lines = (bytes + bytes_of_line - 1) / bytes_of_line;
    return (bytes + 2) / 3 * 4 + lines * 2;
}

[[noreturn]] void fail_for_file(base::TextView path, base::TextView why) {
    throw base::AutomationError(base::ErrorNumber::component_failed, u"Mail",
                                base::Text(path) + u": " + base::Text(why));
}

}  // namespace

OutgoingMessage::OutgoingMessage(const Draft& draft, const ComposingPorts& ports) {
    std::string header = header_of(draft, ports);
    if (draft.files.empty()) {
        pieces_.push_back({header + texts_of(draft, ports.crypto), nullptr, 0});
    } else {
        const std::string boundary = new_boundary(ports.crypto);
        const std::string delimiter = "--" + boundary + "\r\n";
        std::string before = header + multipart_header("mixed", boundary) + delimiter +
                             texts_of(draft, ports.crypto);
        for (const base::Text& path : draft.files) {
            add_file(path, ports);
            pieces_.back().text = before + delimiter + attachment_header(name_in(path));
            // A delimiter begins on a line of its own, the header's empty one not counted.
            if (pieces_.back().file_bytes == 0) pieces_.back().text += "\r\n";
            before.clear();
        }
        pieces_.push_back({"--" + boundary + "--\r\n", nullptr, 0});
    }
    for (const Piece& piece : pieces_) size_ += piece.text.size() + base64_size(piece.file_bytes);
}

void OutgoingMessage::add_file(const base::Text& path, const ComposingPorts& ports) {
    try {
        auto file = ports.files.open(path);
        const std::uint64_t bytes = file->size();
        pieces_.push_back({{}, std::move(file), bytes});
    } catch (const base::AutomationError& error) {
        fail_for_file(path, error.description());
    }
}

base::ByteView OutgoingMessage::next() {
    while (at_ < pieces_.size()) {
        Piece& piece = pieces_[at_];
        if (!text_is_given_) {
            text_is_given_ = true;
            return base::bytes_of(piece.text);
        }
        if (const base::ByteView some = next_of_file(piece); !some.empty()) return some;
        piece.file.reset();
        ++at_;
        text_is_given_ = false;
    }
    return {};
}

// Whatever is in the file, no more and no less may go than the server was told.
base::ByteView OutgoingMessage::next_of_file(Piece& piece) {
    if (!piece.file) return {};
    read_.resize(bytes_of_line * lines_at_once);
    const std::size_t count = piece.file->read(read_);
    const bool at_end = count < read_.size();
    if (count > piece.file_bytes || (at_end && count < piece.file_bytes)) {
        throw base::AutomationError(base::ErrorNumber::component_failed, u"Mail",
                                    u"Załącznik zmienił się w czasie wysyłania.");
    }
    piece.file_bytes -= count;
    encoded_.clear();
    for (std::size_t at = 0; at < count; at += bytes_of_line) {
        const std::size_t line = std::min(bytes_of_line, count - at);
        encoded_ += base::base64_encode(base::ByteView(read_).subspan(at, line));
        encoded_ += "\r\n";
    }
    return base::bytes_of(encoded_);
}

}  // namespace tavrix::mail::outgoing
