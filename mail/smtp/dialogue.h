#pragma once

#include <string>
#include <vector>

#include "base/secret.h"
#include "mail/smtp/reply.h"

namespace tavrix::mail::smtp {

/// Who sends, to whom, and what the server has to know of the message.
struct Envelope {
    std::string sender;
    std::vector<std::string> recipients;
    /// RFC 3461, section 4.1: "SUCCESS,FAILURE" and the like; asked for where servers offer it.
    std::string notify;
    std::uint64_t message_bytes = 0;
    /// An address needs a server that knows SMTPUTF8 (RFC 6531).
    bool needs_utf8 = false;
};

struct Login {
    /// Empty to send without logging in.
    base::SecretUtf8 user;
    base::SecretUtf8 password;
};

/// Whether the server's greeting is still to come.
enum class Greeting { expected, past };

/// What is said to a server to hand over one message (RFC 5321), as a machine: it is told what has
/// come and says what to do. It knows neither connections nor clocks. Nothing is sent to anybody
/// unless the server accepts everybody.
class Dialogue {
  public:
    enum class Step {
        wait,          ///< for the server's answer
        send_command,  ///< take_command()
        send_message,  ///< all of it, then message_sent()
        done,
    };

    Dialogue(Envelope envelope, Login login, Greeting greeting);

    Step step() const noexcept;
    /// A whole line, its end included.
    base::SecretUtf8 take_command() noexcept { return std::move(command_); }
    void message_sent();
    /// What the server has said. In any step: a server may give up in the middle of the message.
    void take(std::string_view bytes);
    /// The connection is at its end, for the reason `why`.
    void broken(base::TextView why);

    /// The server has the message and will deliver it.
    bool is_delivered() const noexcept { return delivered_; }
    /// The server is thinking about the message.
    bool awaits_verdict() const noexcept { return state_ == State::verdict; }
    /// Only the good-bye is still to be said.
    bool is_leaving() const noexcept { return state_ == State::quit; }
    /// Why not, with the server's own words; empty when it is delivered.
    const base::Text& failure() const noexcept { return failure_; }

  private:
    enum class State {
        greeting,
        hello,
        auth_plain,
        auth_login,
        auth_user,
        auth_password,
        mail,
        recipient,
        data,
        message,
        verdict,
        quit,
        done,
    };

    void on_reply(const Reply& reply);
    void on_hello(const Reply& reply);
    void begin_mail();
    void on_recipient(const Reply& reply);
    void ask_for_recipient();
    void fail(base::Text why);
    void fail_login(const Reply& reply);
    void say(State next, std::string_view line);
    void say_secret(State next, std::string_view before, const base::SecretUtf8& secret);

    Envelope envelope_;
    Login login_;
    State state_;
    ReplyReader replies_;
    base::SecretUtf8 command_;
    std::vector<std::string> offers_;
    std::size_t recipient_ = 0;
    base::Text refused_;
    base::Text failure_;
    bool delivered_ = false;
};

}  // namespace tavrix::mail::smtp
