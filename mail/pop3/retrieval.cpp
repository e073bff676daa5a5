#include "mail/pop3/retrieval.h"

#include <algorithm>

#include "base/error.h"
#include "mail/trace_marks.h"

namespace tavrix::mail {
namespace {

using std::chrono::microseconds;
using std::chrono::milliseconds;

constexpr std::int32_t first_socket_number = 10'000;
constexpr milliseconds look_every{1000};
constexpr milliseconds longest_idle{60'000};
// What counts as going on: a server that drips is not.
constexpr std::size_t progress_step_bytes = 16 * 1024;
// Of arrivals between two looks at the form.
constexpr int most_arrivals = 64;
constexpr base::TextView out_of_memory = u"Zabrakło pamięci; wiadomość zostaje na serwerze.";
// Whatever would end a command's line and begin another.
bool fits_a_command(base::ByteView bytes) {
    return std::ranges::none_of(
        bytes, [](std::uint8_t byte) { return byte == '\r' || byte == '\n' || byte == 0; });
}

// Another password than the user's would be tried until the server locks him out.
bool comes_back(base::ByteView bytes, base::TextView text, const ports::CodePage& code_page) {
    base::Text back = code_page.to_text(bytes);
    const bool equal = back == text;
    base::wipe(back.data(), back.size() * sizeof(char16_t));
    return equal;
}

base::Text value_of(const CMessage& message, MessageProperty property) {
    return property == MessageProperty::From ? message.text<MessageProperty::From>()
                                             : message.text<MessageProperty::Subject>();
}

RetrievalSettings copy_of(const RetrievalSettings& settings) {
    return {
        settings.host,           settings.port,          settings.user, settings.password.copy(),
        settings.folder,         settings.delete_stored, settings.ssl,  settings.security,
        settings.message_number, settings.keep_whole};
}

}  // namespace

ports::Security security_of(const RetrievalSettings& settings) noexcept {
    if (settings.security) return *settings.security;
    if (settings.port == pop3s_port) return ports::Security::tls;
    if (!settings.ssl) return ports::Security::none;
    return settings.port == pop3_port ? ports::Security::tls_after_stls : ports::Security::tls;
}

// The form is loaded now.
Retrieval::Retrieval(RetrievalForm form, const RetrievalSettings& settings, RetrievalPorts ports)
    : form_(form),
      settings_(copy_of(settings)),
      security_(form == RetrievalForm::manager ? security_of(settings) : ports::Security::none),
      ports_(std::move(ports)) {
    ports_.trace.look_for_switch();
    failure_.reserve(out_of_memory.size());
    labels_.connection = settings_.host + u":" + base::to_decimal(settings_.port);
}

// The guard of the whole: every failure becomes the run's result.
bool Retrieval::go_on(milliseconds slice) noexcept {
    try {
        try {
            advance(slice);
        } catch (const ports::StreamError& error) {
            apply(dialogue_->broken(error.socket_number(), error.description()));
            // What could not be sent any more was its last word.
            if (phase_ == Phase::talking && dialogue_->over()) end(dialogue_->run_result());
        } catch (const base::AutomationError& error) {
            fail(run_result::not_run, error.description());
        }
    } catch (...) {
        // Out of memory, with room for these words since the beginning.
        run_result_ = run_result::not_run;
        message_.reset();
        if (failure_.empty()) failure_ = out_of_memory;
        disconnect();
        phase_ = Phase::over;
    }
    return phase_ != Phase::over;
}

void Retrieval::cancel() noexcept {
    if (phase_ == Phase::over) return;
    if (phase_ != Phase::showing_failure) {
        run_result_ = run_result::cancelled;
        failure_ = u"Przerwano.";
    }
    disconnect();
    phase_ = Phase::over;
}

void Retrieval::advance(milliseconds slice) {
    switch (phase_) {
        case Phase::not_begun:
            return begin();
        case Phase::connecting:
            if (ports_.stream->connected_within(slice)) begin_talking();
            break;
        case Phase::talking:
            exchange(slice);
            break;
        case Phase::showing_failure:
            return show_failure(slice);
        case Phase::over:
            return;
    }
    look_at_clock();
}

void Retrieval::begin() {
    mark(fetch_marks[u"1"], timer_marks[u"1"]);
    labels_.status = form_ == RetrievalForm::manager ? u"ODBIERAM" : u"Łączenie";
    run_result_ = run_result::empty;
    idle_since_ = last_look_ = ports_.clock.steady_now();
    const base::DateTime now = ports_.clock.now_local();
    watchdog_.emplace(now);
    labels_.time = base::format_date_time(now);
    mark(fetch_marks[u"2"], timer_marks[u"2"]);
    MailboxAccount account;
    account.user = base::take_secret(ports_.code_page.to_bytes(settings_.user));
    account.password = base::take_secret(ports_.code_page.to_bytes(settings_.password.view()));
    const bool is_whole =
        comes_back(account.user.view(), settings_.user, ports_.code_page) &&
        comes_back(account.password.view(), settings_.password.view(), ports_.code_page);
    settings_.password.clear();
    account.message_number = settings_.message_number;
    account.delete_stored = settings_.delete_stored;
    if (!is_whole) {
        return fail(run_result::not_run,
                    u"Nazwa użytkownika lub hasło ma znak spoza strony kodowej systemu.");
    }
    if (!fits_a_command(account.user.view()) || !fits_a_command(account.password.view())) {
        return fail(run_result::not_run, u"Nazwa użytkownika lub hasło ma znak końca wiersza.");
    }
    dialogue_ =
        std::make_unique<Pop3Dialogue>(form_, std::move(account), ports_.code_page, ports_.trace);
    const bool is_port = settings_.port > 0 && settings_.port <= 0xFFFF;
    phase_ = Phase::connecting;
    mark(fetch_marks[u"3"], timer_marks[u"3"]);
    ports_.stream->connect(
        {base::to_utf8(base::trim(settings_.host)),
         is_port ? static_cast<std::uint16_t>(settings_.port) : std::uint16_t{0}},
        security_);
}

void Retrieval::begin_talking() {
    if (form_ == RetrievalForm::socket) labels_.status = u"Połączono";
    phase_ = Phase::talking;
    note_progress(progress_step_bytes);
    // The greeting was said before TLS began.
    if (security_ == ports::Security::tls_after_stls) {
        apply(dialogue_->receive(base::bytes_of("+OK\r\n")));
    }
}

void Retrieval::exchange(milliseconds slice) {
    microseconds left = slice;
    for (int arrivals = 0; arrivals < most_arrivals && phase_ == Phase::talking; ++arrivals) {
        if (!send_some(left)) return;
        if (dialogue_->over()) return end(dialogue_->run_result());
        if (!receive_some(left)) return;
    }
}

// False when the slice passed before the other side took everything.
bool Retrieval::send_some(microseconds& left) {
    while (sent_ < outgoing_.size()) {
        const ports::Sent sent =
            ports_.stream->send(outgoing_.view().subspan(sent_),
                                std::max(milliseconds(0), std::chrono::ceil<milliseconds>(left)));
        sent_ += sent.count;
        left -= sent.waited;
        if (sent.count == 0) return false;
    }
    outgoing_.clear();
    sent_ = 0;
    return true;
}

// False when nothing is there any more for now.
bool Retrieval::receive_some(microseconds& left) {
    const ports::Received received =
        ports_.stream->receive(std::max(milliseconds(0), std::chrono::ceil<milliseconds>(left)));
    left -= received.waited;
    switch (received.state) {
        case ports::Received::State::nothing_yet:
            return false;
        case ports::Received::State::ended:
            apply(dialogue_->ended());
            return true;
        case ports::Received::State::data:
            apply(dialogue_->receive(received.bytes));
            note_progress(received.bytes.size());
            labels_.received_bytes = std::max(labels_.received_bytes, dialogue_->received_bytes());
            labels_.expected_bytes = dialogue_->expected_bytes();
            return left > microseconds(0);
    }
    return false;
}

void Retrieval::apply(Pop3Dialogue::Actions actions) {
    outgoing_ += actions.send.view();
    // As often as the dialogue has something to say.
    if (!actions.send.empty()) note_progress(progress_step_bytes);
    if (actions.store) {
        labels_.received_bytes = dialogue_->message().size();
        const Pop3Dialogue::Stored outcome = store(dialogue_->message());
        return apply(dialogue_->stored(outcome));
    }
    if (!actions.over || dialogue_->failure().empty()) return;
    const base::Text words = failure_.empty() ? dialogue_->failure() : failure_;
    fail(dialogue_->run_result(), words);
}

Pop3Dialogue::Stored Retrieval::store(base::ByteView bytes) {
    message_ = ports_.make_message();
    const Pop3Dialogue::Stored outcome =
        form_ == RetrievalForm::manager ? store_as_manager(bytes) : store_as_socket_form(bytes);
    if (outcome == Pop3Dialogue::Stored::failed || outcome == Pop3Dialogue::Stored::malformed) {
        message_.reset();
    }
    return outcome;
}

Pop3Dialogue::Stored Retrieval::store_as_manager(base::ByteView bytes) {
    ports_.trace.mark(fetch_marks[u"3:dodje"]);
    try {
        message_->take(bytes, settings_.folder, settings_.keep_whole);
    } catch (const base::AutomationError& error) {
        failure_ = u"Nie zapisano wiadomości, zostaje na serwerze. " + error.description();
        return Pop3Dialogue::Stored::failed;
    }
    labels_.from = u"From: " + value_of(*message_, MessageProperty::From);
    labels_.subject = u"Subject: " + value_of(*message_, MessageProperty::Subject);
    ports_.trace.mark(fetch_marks[u"3:dodane"]);
    // Nobody said where its files should go, so the server keeps them.
    const bool has_lost_files = settings_.folder.empty() && !message_->Files().empty();
    if (has_lost_files) return Pop3Dialogue::Stored::kept_here_and_there;
    if (settings_.delete_stored) ports_.trace.mark(fetch_marks[u"3:kasuje"]);
    return Pop3Dialogue::Stored::kept;
}

Pop3Dialogue::Stored Retrieval::store_as_socket_form(base::ByteView bytes) {
    const base::Text text = ports_.code_page.to_text(bytes);
    if (message_->DodajMail(text, settings_.folder, true) < 1)
        return Pop3Dialogue::Stored::malformed;
    return message_->was_read_to_its_end() ? Pop3Dialogue::Stored::kept
                                           : Pop3Dialogue::Stored::failed;
}

void Retrieval::show_failure(milliseconds slice) {
    const milliseconds gone_by = ports_.clock.steady_now() - failed_at_;
    if (gone_by >= ports_.failure_shown_for) {
        phase_ = Phase::over;
        return;
    }
    ports_.clock.sleep(std::min(slice, ports_.failure_shown_for - gone_by));
}

void Retrieval::look_at_clock() {
    if (phase_ != Phase::connecting && phase_ != Phase::talking) return;
    const milliseconds steady = ports_.clock.steady_now();
    if (steady - last_look_ < look_every) return;
    last_look_ = steady;
    const base::DateTime now = ports_.clock.now_local();
    if (form_ == RetrievalForm::manager) {
        labels_.time = base::format_date_time(now);
        if (steady - idle_since_ > longest_idle) time_out(run_result::timed_out);
        return;
    }
    ports_.trace.mark(time_out_marks[u"1"]);
    labels_.time = base::format_date_time(now);
    ports_.trace.mark(time_out_marks[u"2"]);
    if (const auto result = watchdog_->look(now)) {
        ports_.trace.mark(time_out_marks[u"3"]);
        time_out(*result);
        ports_.trace.mark(time_out_marks[u"4u"]);
        return;
    }
    ports_.trace.mark(time_out_marks[u"4"]);
}

// The form goes at once.
void Retrieval::time_out(std::int32_t result) {
    failure_ = u"Serwer nie odpowiada: minął czas na odebranie wiadomości.";
    end(result);
}

void Retrieval::note_progress(std::size_t bytes) noexcept {
    progress_bytes_ += bytes;
    if (progress_bytes_ < progress_step_bytes) return;
    progress_bytes_ = 0;
    idle_since_ = ports_.clock.steady_now();
}

void Retrieval::fail(std::int32_t result, base::Text words) {
    failure_ = std::move(words);
    const bool is_socket_error = result <= -first_socket_number;
    labels_.status =
        form_ == RetrievalForm::socket && is_socket_error ? failure_ : u"err:" + failure_;
    try {
        // A last QUIT, as far as it goes at once.
        microseconds left{0};
        if (phase_ == Phase::talking) send_some(left);
    } catch (...) {
        // The connection is closed anyway.
    }
    end(result);
    failed_at_ = ports_.clock.steady_now();
    phase_ = Phase::showing_failure;
}

void Retrieval::end(std::int32_t result) {
    run_result_ = result;
    mark(fetch_marks[u"3:kończe"], timer_marks[u"4"]);
    disconnect();
    mark(fetch_marks[u"4:kończe all"], timer_marks[u"5"]);
    phase_ = Phase::over;
}

void Retrieval::disconnect() noexcept {
    ports_.trace.mark(disconnect_marks[u"1"]);
    ports_.stream->close();
    ports_.trace.mark(disconnect_marks[u"2"]);
    outgoing_.clear();
    sent_ = 0;
    ports_.trace.mark(disconnect_marks[u"2k"]);
}

// Each form has a procedure of its own.
void Retrieval::mark(const ports::TraceMark& manager, const ports::TraceMark& socket) noexcept {
    ports_.trace.mark(form_ == RetrievalForm::manager ? manager : socket);
}

}  // namespace tavrix::mail
