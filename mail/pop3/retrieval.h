#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "mail/cmessage.h"
#include "mail/pop3/dialogue.h"
#include "mail/pop3/run_result.h"
#include "mail/pop3/watchdog.h"
#include "mail/retrieval_form.h"
#include "ports/clock.h"
#include "ports/stream.h"

namespace tavrix::mail {

/// What the retrieval forms are asked for, library-wide: a value that a call does not give is the
/// last call's.
struct RetrievalSettings {
    base::Text host;
    std::int32_t port = 0;
    base::Text user;
    /// Only while a call goes on.
    base::SecretText password;
    /// Where files go, with or without "\" at its end.
    base::Text folder;
    bool delete_stored = false;
    /// Only the manager knows it: TLS by STLS on the port of the clear, from the first byte on any
    /// other.
    bool ssl = false;
    /// Instead of what `ssl` and the port say.
    std::optional<ports::Security> security{};
    std::int32_t message_number = 1;
    /// Only the manager does: each message is saved as it is too.
    bool keep_whole = false;
};

inline constexpr std::int32_t pop3_port = 110;
/// Where servers speak TLS from the first byte, whoever asks.
inline constexpr std::int32_t pop3s_port = 995;

/// How the manager connects.
ports::Security security_of(const RetrievalSettings& settings) noexcept;

/// Everything outside that one retrieval reaches. The references outlive it.
struct RetrievalPorts {
    std::unique_ptr<ports::Stream> stream;
    ports::Clock& clock;
    ports::Trace& trace;
    const ports::CodePage& code_page;
    /// A message that lives on its own.
    std::function<std::shared_ptr<CMessage>()> make_message;
    /// How long a failure stays in sight before the form goes.
    std::chrono::milliseconds failure_shown_for{3000};
};

/// One connection to the mailbox, through a stream. Nothing is deleted on the server before every
/// file of it is closed here.
///
/// The manager gives up after a minute in which hardly anything came. The socket form speaks in the
/// clear and has a minute for everything.
class Retrieval final : public RetrievalWork {
  public:
    Retrieval(RetrievalForm form, const RetrievalSettings& settings, RetrievalPorts ports);

    RetrievalForm form() const noexcept override { return form_; }
    bool go_on(std::chrono::milliseconds slice) noexcept override;
    void cancel() noexcept override;
    const RetrievalLabels& labels() const noexcept override { return labels_; }

    /// See run_result; not_run before the work began.
    std::int32_t run_result() const noexcept { return run_result_; }
    /// How many messages the server said it had before this run.
    std::int32_t mailbox_count() const noexcept { return dialogue_ ? dialogue_->count() : 0; }
    /// Why it is negative, in Polish.
    const base::Text& failure() const noexcept { return failure_; }
    /// The message that was stored; null when there is none.
    const std::shared_ptr<CMessage>& message() const noexcept { return message_; }

  private:
    enum class Phase { not_begun, connecting, talking, showing_failure, over };

    void advance(std::chrono::milliseconds slice);
    void begin();
    void begin_talking();
    void exchange(std::chrono::milliseconds slice);
    bool send_some(std::chrono::microseconds& left);
    bool receive_some(std::chrono::microseconds& left);
    void apply(Pop3Dialogue::Actions actions);
    Pop3Dialogue::Stored store(base::ByteView bytes);
    Pop3Dialogue::Stored store_as_manager(base::ByteView bytes);
    Pop3Dialogue::Stored store_as_socket_form(base::ByteView bytes);
    void show_failure(std::chrono::milliseconds slice);
    void look_at_clock();
    void time_out(std::int32_t result);
    void note_progress(std::size_t bytes) noexcept;
    void fail(std::int32_t result, base::Text words);
    void end(std::int32_t result);
    void disconnect() noexcept;
    void mark(const ports::TraceMark& manager, const ports::TraceMark& socket) noexcept;

    RetrievalForm form_;
    RetrievalSettings settings_;
    ports::Security security_;
    RetrievalPorts ports_;
    std::unique_ptr<Pop3Dialogue> dialogue_;
    RetrievalLabels labels_;
    Phase phase_ = Phase::not_begun;
    /// Not on its way yet.
    base::SecretBytes outgoing_;
    std::size_t sent_ = 0;
    std::optional<Watchdog> watchdog_;
    /// The manager's limit, on a clock that nobody sets.
    std::chrono::milliseconds idle_since_{0};
    std::size_t progress_bytes_ = 0;
    std::chrono::milliseconds last_look_{0};
    std::chrono::milliseconds failed_at_{0};
    std::int32_t run_result_ = run_result::not_run;
    base::Text failure_;
    std::shared_ptr<CMessage> message_;
};

}  // namespace tavrix::mail
