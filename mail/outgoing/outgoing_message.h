#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <vector>

#include "mail/outgoing/mailbox.h"
#include "ports/clock.h"
#include "ports/crypto.h"
#include "ports/files.h"

namespace tavrix::mail::outgoing {

/// What somebody wants to send.
struct Draft {
    Mailbox from;
    std::vector<Mailbox> to;
    std::vector<Mailbox> cc;
    /// Known to the server alone, never in the header.
    std::vector<Mailbox> bcc;
    base::Text subject;
    base::Text body;
    /// The same as HTML; empty for none. Where only this is given, the plain text is made of it.
    base::Text html;
    /// Paths.
    std::vector<base::Text> files;
    // Fields as the host gives them; empty for none.
    base::Text reply_to;
    base::Text sender;
    base::Text priority;
    /// Who is told that the message was read.
    base::Text receipt_to;
};

/// What composing reaches outside. The references outlive the message.
struct ComposingPorts {
    ports::DataFiles& files;
    ports::Crypto& crypto;
    ports::Clock& clock;
    /// How far local time is ahead of UTC at a local moment.
    std::function<std::chrono::minutes(const base::DateTime&)> utc_offset;
};

/// The message that is made of a draft (RFC 5322, RFC 2045), piece by piece: seven bits, lines of
/// 76 characters as far as there are no long words of the host's own, 998 at most, all ended by CR
/// LF. A file is read while it is sent, so memory does not grow with it.
class OutgoingMessage {
  public:
    /// Opens the files; throws base::AutomationError when one cannot be read.
    OutgoingMessage(const Draft& draft, const ComposingPorts& ports);

    /// Of everything, in bytes.
    std::uint64_t size() const noexcept { return size_; }
    /// What comes next, valid until the next call; empty at the end. Throws when a file cannot be
    /// read or has another size than at the beginning.
    base::ByteView next();

  private:
    struct Piece {
        std::string text;
        /// Its content stands behind the text, in Base64.
        std::unique_ptr<ports::FileReader> file;
        std::uint64_t file_bytes = 0;
    };

    void add_file(const base::Text& path, const ComposingPorts& ports);
    base::ByteView next_of_file(Piece& piece);

    std::vector<Piece> pieces_;
    std::size_t at_ = 0;
    bool text_is_given_ = false;
    std::uint64_t size_ = 0;
    base::Bytes read_;
    std::string encoded_;
};

}  // namespace tavrix::mail::outgoing
