#pragma once

#include <chrono>
#include <cstdint>

#include "base/text.h"

namespace tavrix::mail {

/// Whose dialogue it is, and how the form looks.
enum class RetrievalForm {
    /// Takes messages for what they are: dots at the beginning of lines restored (RFC 1939, 3), a
    /// refusal explained.
    manager,
    /// As it has always been, stuffed dots included. Writes a mark for each of its steps.
    socket,
};

/// What a retrieval form shows.
struct RetrievalLabels {
    /// The server's name and port.
    base::Text connection;
    base::Text status;
    /// "yyyy-MM-dd HH:mm:SS", as of the last look.
    base::Text time;
    /// "From: " and "Subject: " with what the message says.
    base::Text from;
    base::Text subject;
    std::uint64_t received_bytes = 0;
    /// 0 when nobody has said how many there will be.
    std::uint64_t expected_bytes = 0;

    bool operator==(const RetrievalLabels&) const = default;
};

/// The work that a retrieval form shows: one connection to the mailbox, a moment at a time, so that
/// whoever shows it can deliver messages in between. No function throws.
class RetrievalWork {
  public:
    virtual ~RetrievalWork() = default;
    virtual RetrievalForm form() const noexcept = 0;
    /// Goes on for about as long as `slice`. False when the work is over.
    virtual bool go_on(std::chrono::milliseconds slice) noexcept = 0;
    /// Ends the work at once; nothing happens when it is over.
    virtual void cancel() noexcept = 0;
    virtual const RetrievalLabels& labels() const noexcept = 0;
};

/// The window of both forms: modal over the host's active window, with a button that cancels.
/// Returns when the work is over; a form that was closed in whichever way has cancelled it. The
/// messages of the caller's thread go on being delivered meanwhile, so a host can call again: the
/// form that is open comes to the front, and the second call returns at once with its work not
/// begun. So does one whose form cannot be shown.
class RetrievalWindow {
  public:
    virtual ~RetrievalWindow() = default;
    virtual void show(RetrievalWork& work) noexcept = 0;
};

}  // namespace tavrix::mail
