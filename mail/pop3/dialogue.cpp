#include "mail/pop3/dialogue.h"

#include <algorithm>
#include <limits>

#include "mail/pop3/refusal.h"
#include "mail/pop3/run_result.h"
#include "mail/trace_marks.h"

namespace tavrix::mail {
namespace {

// RFC 2449 allows 512; what is far longer is no reply.
constexpr std::size_t longest_line_bytes = 64 * 1024;
// Twice as much again is needed to take it apart, which a 32-bit host still has.
constexpr std::size_t largest_message_bytes = 100u * 1024 * 1024;
constexpr std::string_view end_of_message = "\n.\r\n";

// The words of a reply, which blanks part; "" behind the last one.
std::string_view word_of(base::ByteView line, int place) {
    std::string_view rest = base::chars_of(line);
    rest = rest.substr(0, rest.find_first_of("\r\n"));
    for (;;) {
        const std::size_t blank = rest.find(' ');
        if (place-- == 0) return rest.substr(0, blank);
        if (blank == std::string_view::npos) return {};
        rest.remove_prefix(blank + 1);
    }
}

struct Number {
    bool is_number = false;
    bool is_negative = false;
    std::uint64_t value = 0;
};

// As much as fits of what a server claims.
Number number_of(std::string_view word) {
    Number number;
    number.is_negative = word.starts_with('-');
    if (number.is_negative) word.remove_prefix(1);
    number.is_number = !word.empty();
    constexpr std::uint64_t greatest = std::numeric_limits<std::int32_t>::max();
    for (const char c : word) {
        if (c < '0' || c > '9') return {};
        number.value = std::min(number.value * 10 + static_cast<unsigned>(c - '0'), greatest);
    }
    return number;
}

bool is_positive(base::ByteView line) {
    return !line.empty() && line.front() == '+';
}

std::string with_number(std::string_view command, std::int32_t number) {
    return std::string(command) + " " + std::to_string(number);
}

}  // namespace

Pop3Dialogue::Pop3Dialogue(RetrievalForm form, MailboxAccount account,
                           const ports::CodePage& code_page, ports::Trace& trace)
    : form_(form), account_(std::move(account)), code_page_(code_page), trace_(trace) {}

Pop3Dialogue::Actions Pop3Dialogue::receive(base::ByteView bytes) {
    Actions actions;
    if (over() || state_ == State::storing) return actions;
    mark(data_arrival_marks[u"1"]);
    buffer_.insert(buffer_.end(), bytes.begin(), bytes.end());
    mark(data_arrival_marks[u"2"]);
    act_on_arrival(actions);
    mark(data_arrival_marks[u"44"]);
    return actions;
}

void Pop3Dialogue::act_on_arrival(Actions& actions) {
    base::Bytes line;
    while (!over() && state_ != State::storing) {
        if (state_ == State::message) return act_on_message(actions);
        if (!take_line(line)) {
            if (buffer_.size() > longest_line_bytes) refuse(buffer_, actions);
            return;
        }
        mark(data_arrival_marks[u"8"]);
        act_on_line(line, actions);
    }
}

// With its end.
bool Pop3Dialogue::take_line(base::Bytes& line) {
    const auto begin = buffer_.begin() + static_cast<std::ptrdiff_t>(searched_);
    const auto end = std::find(begin, buffer_.end(), '\n');
    searched_ = buffer_.size();
    if (end == buffer_.end()) return false;
    line.assign(buffer_.begin(), end + 1);
    buffer_.erase(buffer_.begin(), end + 1);
    searched_ = 0;
    return true;
}

void Pop3Dialogue::act_on_line(base::ByteView line, Actions& actions) {
    if (!is_positive(line)) return refuse(line, actions);
    switch (state_) {
        case State::greeting:
            mark(data_arrival_marks[u"9"]);
            count_ = 0;
            state_ = State::user;
            mark(data_arrival_marks[u"10"]);
            return say("USER ", actions, account_.user.view());
        case State::user:
            mark(data_arrival_marks[u"11"]);
            state_ = State::password;
            say("PASS ", actions, account_.password.view());
            return account_.password.clear();
        case State::password:
            mark(data_arrival_marks[u"12"]);
            state_ = State::statistics;
            return say("STAT", actions);
        case State::statistics:
            mark(data_arrival_marks[u"13"]);
            return act_on_statistics(line, actions);
        case State::quit:
            if (--owed_answers_ > 0) return;
            mark(data_arrival_marks[u"37"]);
            return finish(actions);
        case State::message:
        case State::storing:
        case State::over:
            return;
    }
}

void Pop3Dialogue::act_on_statistics(base::ByteView line, Actions& actions) {
    const Number count = number_of(word_of(line, 1));
    mark(data_arrival_marks[u"14"]);
    if (!count.is_number) return refuse(line, actions);
    count_ = static_cast<std::int32_t>(count.value);
    mailbox_bytes_ = number_of(word_of(line, 2)).value;
    mark(data_arrival_marks[u"15"]);
    if (count.is_negative && count_ != 0) {
        mark(data_arrival_marks[u"19"]);
        return quit(actions, 1);
    }
    if (count_ < account_.message_number) {
        // Nobody waits for the answer: it changes nothing.
        mark(data_arrival_marks[u"16"]);
        say("QUIT", actions);
        mark(data_arrival_marks[u"17"]);
        return finish(actions);
    }
    mark(data_arrival_marks[u"20"]);
    state_ = State::message;
    buffer_.clear();
    searched_ = 0;
    if (count_ == 1) expected_bytes_ = mailbox_bytes_;
    mark(data_arrival_marks[u"21"]);
    say(with_number("RETR", account_.message_number), actions);
}

void Pop3Dialogue::act_on_message(Actions& actions) {
    mark(data_arrival_marks[u"22"]);
    if (message_is_refused(actions)) return;
    const std::string_view text = base::chars_of(buffer_);
    const std::size_t end = text.find(end_of_message, searched_);
    if (end == std::string_view::npos) {
        searched_ = text.size() - std::min(text.size(), end_of_message.size() - 1);
        if (text.size() > largest_message_bytes) {
            fail(run_result::not_saved, u"Wiadomość jest większa niż 100 MiB.", actions);
        }
        return;
    }
    mark(data_arrival_marks[u"23"]);
    cut_out_message(end + end_of_message.size());
    state_ = State::storing;
    actions.store = true;
    mark(data_arrival_marks[u"26"]);
}

// The status line, as soon as it is whole. The socket form has always waited a minute in vain for a
// message that was refused; it need not wait to say so.
bool Pop3Dialogue::message_is_refused(Actions& actions) {
    if (status_line_seen_) return false;
    const auto end = std::find(buffer_.begin(), buffer_.end(), '\n');
    if (end == buffer_.end()) {
        if (buffer_.size() <= longest_line_bytes) return false;
        refuse(buffer_, actions);
        return true;
    }
    const base::ByteView line(buffer_.data(), static_cast<std::size_t>(end - buffer_.begin()));
    const bool manager = form_ == RetrievalForm::manager;
    if (!is_positive(line) && (manager || (!line.empty() && line.front() == '-'))) {
        refuse(line, actions);
        if (!manager) run_result_ = run_result::timed_out;
        return true;
    }
    status_line_seen_ = true;
    if (const Number size = number_of(word_of(line, 1)); size.value > 0)
        expected_bytes_ = size.value;
    return false;
}

// Leaves in the buffer what stands between the status line and the final dot, which ends at `end`.
void Pop3Dialogue::cut_out_message(std::size_t end) {
    constexpr std::size_t final_dot_bytes = 3;
    const std::string_view line_end = form_ == RetrievalForm::manager ? "\n" : "\r\n";
    const std::size_t first_line = base::chars_of(buffer_).find(line_end) + line_end.size();
    mark(data_arrival_marks[u"24"]);
    buffer_.resize(std::max(end - final_dot_bytes, first_line));
    buffer_.erase(buffer_.begin(), buffer_.begin() + static_cast<std::ptrdiff_t>(first_line));
    mark(data_arrival_marks[u"25"]);
    if (form_ == RetrievalForm::manager) restore_dots();
}

// In place: a line that begins with a dot was sent with one more.
void Pop3Dialogue::restore_dots() {
    bool at_line_begin = true;
    std::erase_if(buffer_, [&](std::uint8_t byte) {
        const bool stuffed = at_line_begin && byte == '.';
        at_line_begin = byte == '\n';
        return stuffed;
    });
}

Pop3Dialogue::Actions Pop3Dialogue::stored(Stored outcome) {
    Actions actions;
    if (state_ != State::storing) return actions;
    mark(data_arrival_marks[u"27"]);
    base::Bytes().swap(buffer_);
    searched_ = 0;
    if (outcome == Stored::failed) {
        say("QUIT", actions);
        fail(run_result::not_saved, u"Nie zapisano wiadomości; zostaje na serwerze.", actions);
        return actions;
    }
    int owed_answers = 1;
    if (outcome == Stored::malformed) {
        mark(data_arrival_marks[u"28"]);
    } else {
        mark(data_arrival_marks[u"30"]);
        ++run_result_;
        mark(data_arrival_marks[u"33"]);
        if (account_.delete_stored && outcome == Stored::kept) {
            mark(data_arrival_marks[u"34"]);
            say(with_number("DELE", account_.message_number), actions);
            ++owed_answers;
        }
    }
    mark(data_arrival_marks[u"36"]);
    quit(actions, owed_answers);
    return actions;
}

// A message is deleted with the session's end, so a server that leaves instead of answering QUIT
// has kept it at the worst, and it comes again.
Pop3Dialogue::Actions Pop3Dialogue::ended() {
    Actions actions;
    if (over()) return actions;
    if (state_ == State::quit && owed_answers_ == 1) {
        finish(actions);
    } else {
        fail(run_result::timed_out, u"Serwer zakończył połączenie w trakcie wymiany.", actions);
    }
    return actions;
}

Pop3Dialogue::Actions Pop3Dialogue::broken(std::int32_t number, base::TextView words) {
    Actions actions;
    if (over()) return actions;
    // Servers end TLS without its own word for the end.
    if (state_ == State::quit && owed_answers_ == 1) {
        finish(actions);
        return actions;
    }
    trace_.mark(socket_error_marks[u"1"], base::to_decimal(number) + u" " + base::Text(words));
    fail(-number, explained_failure(words), actions);
    return actions;
}

void Pop3Dialogue::say(std::string_view command, Actions& actions, base::ByteView argument) {
    actions.send += base::bytes_of(command);
    actions.send += argument;
    actions.send += base::bytes_of("\r\n");
}

void Pop3Dialogue::quit(Actions& actions, int owed_answers) {
    state_ = State::quit;
    owed_answers_ = owed_answers;
    say("QUIT", actions);
}

void Pop3Dialogue::finish(Actions& actions) {
    state_ = State::over;
    actions.over = true;
    account_.password.clear();
    base::Bytes().swap(buffer_);
}

void Pop3Dialogue::fail(std::int32_t result, base::Text words, Actions& actions) {
    run_result_ = result;
    failure_ = std::move(words);
    finish(actions);
}

void Pop3Dialogue::refuse(base::ByteView line, Actions& actions) {
    mark(data_arrival_marks[u"3"]);
    std::string_view words = base::chars_of(line);
    constexpr std::size_t longest_shown = 500;
    words = words.substr(0, std::min(words.find_first_of("\r\n"), longest_shown));
    base::Text reply = code_page_.to_text(base::bytes_of(words));
    // A stranger's words, which must not steer whatever shows them.
    std::ranges::replace_if(
        reply, [](char16_t c) { return c < 0x20 || (c >= 0x7F && c <= 0x9F); }, u' ');
    mark(data_arrival_marks[u"4"]);
    fail(run_result::refused,
         u"POP3 Błąd: " + (form_ == RetrievalForm::manager ? explained_refusal(reply) : reply),
         actions);
    mark(data_arrival_marks[u"7"]);
}

void Pop3Dialogue::mark(const ports::TraceMark& mark) noexcept {
    if (form_ == RetrievalForm::socket) trace_.mark(mark);
}

}  // namespace tavrix::mail
