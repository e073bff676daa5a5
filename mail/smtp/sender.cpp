#include "mail/smtp/sender.h"

#include <algorithm>

#include "mail/smtp/dot_stuffing.h"

namespace tavrix::mail::smtp {
namespace {

using ports::Received;
using std::chrono::microseconds;
using std::chrono::milliseconds;

constexpr milliseconds ask_every{100};

[[noreturn]] void stop(base::TextView why) {
    throw base::AutomationError(base::ErrorNumber::component_failed, u"SMTP", base::Text(why));
}

class Sending {
  public:
    Sending(ports::Stream& stream, Dialogue& dialogue, outgoing::OutgoingMessage& message,
            const Patience& patience, SendingListener& listener)
        : stream_(stream),
          dialogue_(dialogue),
          message_(message),
          patience_(patience),
          listener_(listener) {}

    void connect(const Server& server) {
        stream_.connect({server.host, server.port}, server.security);
        // The server's first answers are part of it then.
        const bool talks = server.security == ports::Security::tls_after_starttls;
        milliseconds left = patience_.connect + (talks ? patience_.answer : milliseconds(0));
        while (!stream_.connected_within(std::min(ask_every, left))) {
            left -= ask_every;
            ask_listener();
            if (left <= milliseconds(0)) stop(u"Przekroczono czas oczekiwania na połączenie.");
        }
    }

    void converse() {
        bool leaving = false;
        while (dialogue_.step() != Dialogue::Step::done) {
            if (dialogue_.is_delivered() && !leaving) {
                leaving = true;
                listener_.on_stage(Stage::leaving);
            }
            switch (dialogue_.step()) {
                case Dialogue::Step::send_command: {
                    const base::SecretUtf8 command = dialogue_.take_command();
                    send_all(base::bytes_of(command.view()));
                    break;
                }
                case Dialogue::Step::send_message:
                    send_message();
                    break;
                case Dialogue::Step::wait:
                    wait();
                    break;
                case Dialogue::Step::done:
                    break;
            }
        }
    }

  private:
    void ask_listener() {
        const bool goes_on = listener_.goes_on(sent_, message_.size());
        // What the server has cannot be taken back.
        if (!goes_on && !dialogue_.is_leaving()) stop(u"Przerwano.");
    }

    void send_all(base::ByteView bytes) {
        microseconds left = patience_.answer;
        while (!bytes.empty()) {
            const ports::Sent sent = stream_.send(bytes, ask_every);
            bytes = bytes.subspan(sent.count);
            left = sent.count > 0 ? microseconds(patience_.answer) : left - sent.waited;
            if (sent.count == 0) ask_listener();
            if (left <= microseconds(0)) stop(u"Przekroczono czas oczekiwania na wysłanie.");
        }
    }

    void send_message() {
        for (base::ByteView piece = message_.next(); !piece.empty(); piece = message_.next()) {
            send_all(stuffing_.stuffed(piece));
            sent_ += piece.size();
            ask_listener();
            take(stream_.receive(milliseconds(0)));
            if (dialogue_.step() != Dialogue::Step::send_message) return;
        }
        send_all(base::bytes_of(std::string_view(".\r\n")));
        dialogue_.message_sent();
    }

    // The whole of an answer has its time, or one that comes byte by byte would take hours.
    void wait() {
        microseconds left = dialogue_.awaits_verdict() ? patience_.verdict
                            : dialogue_.is_leaving()   ? patience_.good_bye
                                                       : patience_.answer;
        while (dialogue_.step() == Dialogue::Step::wait) {
            const milliseconds slice = std::min(ask_every, std::chrono::ceil<milliseconds>(left));
            const Received received = stream_.receive(slice);
            take(received);
            left -= received.waited;
            if (dialogue_.step() != Dialogue::Step::wait) return;
            ask_listener();
            if (left <= microseconds(0))
                stop(u"Przekroczono czas oczekiwania na odpowiedź serwera.");
        }
    }

    void take(const Received& received) {
        if (received.state == Received::State::data) dialogue_.take(base::chars_of(received.bytes));
        if (received.state == Received::State::ended)
            dialogue_.broken(u"Serwer zamknął połączenie.");
    }

    ports::Stream& stream_;
    Dialogue& dialogue_;
    outgoing::OutgoingMessage& message_;
    const Patience& patience_;
    SendingListener& listener_;
    DotStuffing stuffing_;
    std::uint64_t sent_ = 0;
};

}  // namespace

base::Text send(ports::Stream& stream, const Server& server, Dialogue dialogue,
                outgoing::OutgoingMessage& message, const Patience& patience,
                SendingListener& listener) {
    Sending sending(stream, dialogue, message, patience, listener);
    try {
        sending.connect(server);
        sending.converse();
    } catch (const base::AutomationError& error) {
        dialogue.broken(error.description());
    }
    stream.close();
    if (dialogue.is_delivered()) {
        listener.on_stage(Stage::sent);
        return {};
    }
    // The empty text would say that it went.
    return dialogue.failure().empty() ? u"Nieznany błąd" : dialogue.failure();
}

}  // namespace tavrix::mail::smtp
