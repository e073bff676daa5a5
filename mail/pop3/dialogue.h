#pragma once

#include <cstdint>

#include "base/secret.h"
#include "base/text.h"
#include "mail/retrieval_form.h"
#include "ports/code_page.h"
#include "ports/trace.h"

namespace tavrix::mail {

/// What a mailbox is asked for.
struct MailboxAccount {
    /// As they go over the line, without CR, LF and NUL.
    base::SecretBytes user;
    base::SecretBytes password;
    /// Counts from 1.
    std::int32_t message_number = 1;
    bool delete_stored = false;
};

/// One connection to a mailbox, which brings one message at most (RFC 1939). Knows no sockets, no
/// clock and no files: it is told what has come and says what to do next. Nothing throws but
/// std::bad_alloc.
class Pop3Dialogue {
  public:
    /// What to do now, in this order.
    struct Actions {
        /// To be sent.
        base::SecretBytes send;
        /// message() is whole: keep it, then call stored().
        bool store = false;
        /// Once all is sent the connection is to be closed; run_result() is final.
        bool over = false;
    };

    enum class Stored {
        /// Every file of it is closed.
        kept,
        /// The same, and it must stay on the server whatever was asked.
        kept_here_and_there,
        /// It is no message: it stays, and the run counts nothing.
        malformed,
        /// It could not be written.
        failed,
    };

    Pop3Dialogue(RetrievalForm form, MailboxAccount account, const ports::CodePage& code_page,
                 ports::Trace& trace);

    /// Takes what has come. Replies are lines, wherever arrivals were cut or joined.
    Actions receive(base::ByteView bytes);
    /// What became of message(), which is gone then.
    Actions stored(Stored outcome);
    /// The other side has ended the connection in an orderly way.
    Actions ended();
    /// The connection broke with the socket's `number`.
    Actions broken(std::int32_t number, base::TextView words);

    /// Between `store` and stored().
    base::ByteView message() const noexcept { return buffer_; }
    std::int32_t run_result() const noexcept { return run_result_; }
    /// How many messages the server says it has.
    std::int32_t count() const noexcept { return count_; }
    /// Why the run failed, for the status line; empty when it did not.
    const base::Text& failure() const noexcept { return failure_; }
    bool over() const noexcept { return state_ == State::over; }
    /// How much of the message is here, and how much there will be; 0 when nobody has said.
    std::uint64_t received_bytes() const noexcept {
        return state_ == State::message ? buffer_.size() : 0;
    }
    std::uint64_t expected_bytes() const noexcept { return expected_bytes_; }

  private:
    // By the reply that is awaited; the numbers are the form's own, 5 has never been in use.
    enum class State {
        greeting = 0,
        user = 1,
        password = 2,
        statistics = 3,
        message = 4,
        quit = 6,
        storing,
        over
    };

    void act_on_arrival(Actions& actions);
    bool take_line(base::Bytes& line);
    void act_on_line(base::ByteView line, Actions& actions);
    void act_on_statistics(base::ByteView line, Actions& actions);
    void act_on_message(Actions& actions);
    bool message_is_refused(Actions& actions);
    void cut_out_message(std::size_t end);
    void restore_dots();
    void say(std::string_view command, Actions& actions, base::ByteView argument = {});
    void quit(Actions& actions, int owed_answers);
    void finish(Actions& actions);
    void fail(std::int32_t result, base::Text words, Actions& actions);
    void refuse(base::ByteView line, Actions& actions);
    void mark(const ports::TraceMark& mark) noexcept;

    RetrievalForm form_;
    MailboxAccount account_;
    const ports::CodePage& code_page_;
    ports::Trace& trace_;
    State state_ = State::greeting;
    /// Of the replies, and of the message while it comes.
    base::Bytes buffer_;
    /// How much of the buffer was looked through for its end.
    std::size_t searched_ = 0;
    /// Of the message: it was no refusal.
    bool status_line_seen_ = false;
    std::int32_t count_ = 0;
    std::uint64_t mailbox_bytes_ = 0;
    std::uint64_t expected_bytes_ = 0;
    int owed_answers_ = 0;
    std::int32_t run_result_ = 0;
    base::Text failure_;
};

}  // namespace tavrix::mail
