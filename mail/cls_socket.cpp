#include "mail/cls_socket.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "base/error.h"
#include "base/secret.h"

namespace tavrix::mail {
namespace {

using ports::Received;
using std::chrono::microseconds;
using std::chrono::milliseconds;

constexpr milliseconds check_every{100};
// Packets of one answer follow each other faster, at least from one network to the next.
constexpr milliseconds pause_at_the_end{20};
constexpr std::size_t send_piece_bytes = 64 * 1024;
constexpr std::size_t largest_text_bytes = 64u * 1024 * 1024;
constexpr base::TextView interrupted = u"Przerwano.";

[[noreturn]] void fail(base::TextView reason) {
    throw base::AutomationError(base::ErrorNumber::component_failed, u"clsSocket",
                                base::Text(reason));
}

std::optional<std::uint16_t> port_of(base::TextView digits) {
    std::uint32_t port = 0;
    for (const char16_t digit : digits) {
        if (digit < u'0' || digit > u'9') return std::nullopt;
        port = port * 10 + (digit - u'0');
        if (port > 0xFFFF) return std::nullopt;
    }
    if (port == 0) return std::nullopt;
    return static_cast<std::uint16_t>(port);
}

// "host:port" or "[IPv6 address]:port"; the stream judges the host.
ports::StreamAddress address_of(base::TextView text) {
    const std::size_t colon = text.rfind(u':');
    if (colon != base::TextView::npos) {
        base::TextView host = text.substr(0, colon);
        const bool bracketed = host.size() > 2 && host.front() == u'[' && host.back() == u']';
        if (bracketed) host = host.substr(1, host.size() - 2);
        const bool is_ipv6 = host.find(u':') != base::TextView::npos;
        const auto port = port_of(text.substr(colon + 1));
        if (port && !host.empty() && bracketed == is_ipv6) return {base::to_utf8(host), *port};
    }
    fail(u"Nieprawidłowy adres: oczekiwano host:port.");
}

/// True for as long as it lives; then as it was, because methods come inside each other.
class Mark {
  public:
    explicit Mark(bool& mark) noexcept : mark_(mark), before_(std::exchange(mark, true)) {}
    ~Mark() { mark_ = before_; }
    Mark(const Mark&) = delete;
    Mark& operator=(const Mark&) = delete;

  private:
    bool& mark_;
    bool before_;
};

/// A wait that ended without a byte: the only failure that leaves the connection as it was.
struct NothingCame {
    base::TextView reason;
};

base::Text reason_of(const std::exception& error) {
    const auto* known = dynamic_cast<const base::AutomationError*>(&error);
    return known != nullptr ? known->description() : base::from_utf8(error.what());
}

}  // namespace

clsSocket::clsSocket(SocketPorts ports)
    : ports_(std::move(ports)),
      connect_timeout_(ports_.settings.connect_timeout),
      transfer_timeout_(ports_.settings.no_progress_timeout) {}

std::int32_t clsSocket::OpeneSocket(std::int32_t ssl, std::int32_t maxWaitMillisec,
                                    const base::Text& Adress) {
    if (busy_) return 0;
    const bool success = run([&] {
        if (ports_.read_settings) ports_.read_settings();
        const milliseconds wait(maxWaitMillisec);
        connect_timeout_ = maxWaitMillisec > 0 ? wait : ports_.settings.connect_timeout;
        transfer_timeout_ = maxWaitMillisec > 0 ? wait : ports_.settings.no_progress_timeout;
        broken_because_.clear();
        close();
        connect(ssl != 0, base::Text(base::trim(Adress)));
    });
    complete(success);
    return success ? 1 : 0;
}

void clsSocket::CloseSocket() {
    closed_by_host_ = true;
    broken_because_.clear();
    {
        const Mark busy(busy_);
        close();
    }
    if (!completing_) complete(true);
}

void clsSocket::SendString(const base::Text& s) {
    if (busy_) return;
    const bool success = run([&] {
        // A line with a password may be among what is sent.
        const base::SecretBytes bytes = base::take_secret(ports_.code_page.to_bytes(s));
        send(bytes.view());
    });
    complete(success);
}

base::Text clsSocket::ReceiveString() {
    if (busy_) return {};
    base::Bytes bytes;
    base::Text text;
    const bool success = run([&] {
        bytes = receive();
        text = ports_.code_page.to_text(bytes);
    });
    if (success) {
        ports_.events.BinaryData(bytes);
        ports_.events.TextData(text);
    }
    complete(success);
    return text;
}

// The guard of every method: a failure becomes what ProgressInfo says, and ends the connection,
// because nobody knows how much of a text went over it.
template <typename Task>
bool clsSocket::run(Task task) {
    const Mark busy(busy_);
    since_check_ = microseconds(0);
    closed_by_host_ = false;
    ports_.events.method_begins();
    try {
        task();
        return true;
    } catch (const NothingCame& ended) {
        tell(socket_progress::failed, base::Text(ended.reason));
    } catch (const std::exception& error) {
        // First of all, so that no failure to tell of it leaves it open.
        ports_.stream->close();
        tell(socket_progress::failed, reason_of(error));
        close();
    }
    return false;
}

void clsSocket::complete(bool success) {
    const Mark completing(completing_);
    ports_.events.TaskCompleted(success);
}

void clsSocket::connect(bool tls, const base::Text& address) {
    const ports::StreamAddress far_end = address_of(address);
    if (!closed_by_host_) tell(socket_progress::connecting, address);
    if (closed_by_host_) fail(interrupted);
    ports_.stream->connect(far_end, tls ? ports::Security::tls : ports::Security::none);
    milliseconds left = connect_timeout_;
    for (;;) {
        const milliseconds slice = std::min(check_every, left);
        if (ports_.stream->connected_within(slice)) break;
        left -= slice;
        if (stopped_after(slice)) fail(interrupted);
        if (left <= milliseconds(0)) fail(u"Przekroczono czas oczekiwania na połączenie.");
    }
    address_ = address;
    tell(socket_progress::connected, address);
    if (closed_by_host_) fail(interrupted);
}

void clsSocket::require_connection() {
    if (!broken_because_.empty()) fail(std::exchange(broken_because_, base::Text()));
    if (address_.empty()) fail(u"Połączenie nie jest otwarte.");
}

void clsSocket::send(base::ByteView bytes) {
    require_connection();
    for (std::size_t done = 0; done < bytes.size();) {
        const std::size_t piece = std::min(send_piece_bytes, bytes.size() - done);
        send_piece(bytes.subspan(done, piece));
        done += piece;
        if (bytes.size() <= send_piece_bytes) break;
        bool abort = false;
        // 32 bits would not hold the product.
        const std::uint64_t percent = std::uint64_t{done} * 100 / bytes.size();
        ports_.events.PercentDone(static_cast<std::int32_t>(percent), abort);
        if (abort || closed_by_host_) fail(interrupted);
    }
    tell(socket_progress::sent, base::to_decimal(static_cast<std::int64_t>(bytes.size())));
}

void clsSocket::send_piece(base::ByteView piece) {
    microseconds left = transfer_timeout_;
    while (!piece.empty()) {
        const milliseconds slice = std::min(check_every, std::chrono::ceil<milliseconds>(left));
        const ports::Sent sent = ports_.stream->send(piece, slice);
        piece = piece.subspan(sent.count);
        left = sent.count > 0 ? microseconds(transfer_timeout_) : left - sent.waited;
        if (stopped_after(sent.waited)) fail(interrupted);
        if (left <= microseconds(0)) fail(u"Przekroczono czas oczekiwania na wysłanie.");
    }
}

base::Bytes clsSocket::receive() {
    require_connection();
    base::Bytes received;
    microseconds left = transfer_timeout_;
    while (receive_more(received, left)) {
    }
    if (received.empty()) throw NothingCame{u"Przekroczono czas oczekiwania na dane."};
    return received;
}

// Adds one piece. False when the text is complete or the time is over.
bool clsSocket::receive_more(base::Bytes& received, microseconds& left) {
    const milliseconds slice = received.empty() ? check_every : pause_at_the_end;
    Received piece;
    try {
        piece = ports_.stream->receive(std::min(slice, std::chrono::ceil<milliseconds>(left)));
    } catch (const base::AutomationError& error) {
        // What came before the connection broke is the host's; the next call will fail.
        if (received.empty()) throw;
        broken_because_ = error.description();
        close();
        return false;
    }
    if (piece.state == Received::State::ended) {
        if (!received.empty()) return false;
        fail(u"Druga strona zamknęła połączenie.");
    }
    if (piece.state == Received::State::nothing_yet && !received.empty()) return false;
    if (received.size() + piece.bytes.size() > largest_text_bytes) {
        fail(u"Odebrano ponad 64 MiB danych.");
    }
    received.insert(received.end(), piece.bytes.begin(), piece.bytes.end());
    if (!piece.bytes.empty()) {
        tell(socket_progress::received,
             base::to_decimal(static_cast<std::int64_t>(received.size())));
    }
    left -= piece.waited;
    if (stopped_after(piece.waited)) {
        if (received.empty()) throw NothingCame{interrupted};
        return false;
    }
    return left > microseconds(0);
}

bool clsSocket::stopped_after(microseconds waited) {
    if (closed_by_host_) return true;
    since_check_ += waited;
    if (since_check_ < check_every) return false;
    since_check_ = microseconds(0);
    bool abort = false;
    ports_.events.AbortCheck(abort);
    return abort || closed_by_host_;
}

void clsSocket::close() {
    ports_.stream->close();
    if (address_.empty()) return;
    tell(socket_progress::closed, std::exchange(address_, base::Text()));
}

void clsSocket::tell(base::TextView name, const base::Text& value) {
    ports_.events.ProgressInfo(base::Text(name), value);
}

}  // namespace tavrix::mail
