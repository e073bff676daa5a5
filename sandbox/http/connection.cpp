#include "sandbox/http/connection.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <stdexcept>

#include "sandbox/basics/text.h"

namespace tavrix::sandbox {
namespace {

constexpr int transfer_timeout_ms = 30'000;

/// Asks with getpeername or getsockname.
void describe(int socket, int (*ask)(int, sockaddr*, socklen_t*), std::string& ip, int& port) {
    sockaddr_storage address{};
    socklen_t size = sizeof address;
    if (ask(socket, reinterpret_cast<sockaddr*>(&address), &size) != 0) return;
    std::array<char, INET6_ADDRSTRLEN> text{};
    if (address.ss_family == AF_INET) {
        const auto& v4 = reinterpret_cast<const sockaddr_in&>(address);
        inet_ntop(AF_INET, &v4.sin_addr, text.data(), text.size());
        port = ntohs(v4.sin_port);
    } else {
        const auto& v6 = reinterpret_cast<const sockaddr_in6&>(address);
        inet_ntop(AF_INET6, &v6.sin6_addr, text.data(), text.size());
        port = ntohs(v6.sin6_port);
    }
    ip = text.data();
}

/// Puts "Connection: close" in the place of the library's "Keep-Alive": a client that is not told
/// would send its next request into a connection about to end.
void announce_close(std::string& answer) {
    constexpr std::string_view keep_alive = "\r\nKeep-Alive:";
    const std::size_t from = answer.find(keep_alive);
    if (from == std::string::npos) return;
    answer.replace(from, answer.find("\r\n", from + 2) - from, "\r\nConnection: close");
}

}  // namespace

SocketHandle::~SocketHandle() {
    ::close(socket_);
}

void SocketHandle::reset_on_close() {
    const linger immediately{1, 0};
    setsockopt(socket_, SOL_SOCKET, SO_LINGER, &immediately, sizeof immediately);
}

StopSignal::StopSignal() : descriptor_(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {
    if (descriptor_ < 0) throw std::runtime_error("cannot make an event descriptor");
}

StopSignal::~StopSignal() {
    ::close(descriptor_);
}

void StopSignal::raise() {
    raised_ = true;
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto written = ::write(descriptor_, &one, sizeof one);
}

Connection::Connection(int socket, SSL_CTX* tls, const StopSignal& stop, unsigned number)
    : socket_(socket), stop_(stop), number_(number) {
    const int yes = 1;
    setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
    const timeval timeout{transfer_timeout_ms / 1000, 0};
    setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, &timeout, sizeof timeout);
    setsockopt(socket, SOL_SOCKET, SO_SNDTIMEO, &timeout, sizeof timeout);
    if (tls == nullptr) return;
    tls_.reset(SSL_new(tls));
    SSL_set_fd(tls_.get(), socket);
    usable_ = wait_for(POLLIN, transfer_timeout_ms) == Wait::ready && SSL_accept(tls_.get()) == 1;
}

Connection::~Connection() {
    if (tls_ && usable_) SSL_shutdown(tls_.get());
}

Connection::Wait Connection::wait_for(short events, int timeout_ms) const {
    std::array<pollfd, 2> waited{pollfd{socket_.get(), events, 0},
                                 pollfd{stop_.descriptor(), POLLIN, 0}};
    const int ready = ::poll(waited.data(), waited.size(), timeout_ms);
    if (stop_.raised()) return Wait::stopped;
    return ready > 0 && waited[0].revents != 0 ? Wait::ready : Wait::timed_out;
}

bool Connection::pause(int milliseconds) const {
    return wait_for(POLLRDHUP, milliseconds) == Wait::timed_out;
}

bool Connection::wait_for_request(int timeout_ms) {
    head_read_ = no_body_ = handled_ = false;
    head_.clear();
    if (input_at_ < input_.size() || (tls_ && SSL_pending(tls_.get()) > 0)) return true;
    return wait_for(POLLIN, timeout_ms) == Wait::ready && fill();
}

bool Connection::fill() {
    if (wait_for(POLLIN, tls_ && SSL_pending(tls_.get()) > 0 ? 0 : transfer_timeout_ms) ==
        Wait::stopped)
        return false;
    input_.resize(64 * 1024);
    const auto count = tls_ ? SSL_read(tls_.get(), input_.data(), int(input_.size()))
                            : ::recv(socket_.get(), input_.data(), input_.size(), 0);
    input_at_ = 0;
    input_.resize(count > 0 ? std::size_t(count) : 0);
    return count > 0;
}

void Connection::drain() {
    constexpr int most_pieces = 1024;
    ::shutdown(socket_.get(), SHUT_WR);
    for (int piece = 0; piece < most_pieces; ++piece)
        if (wait_for(POLLIN, 1000) != Wait::ready || !fill()) break;
    usable_ = false;
}

void Connection::inspect_head() {
    head_read_ = true;
    const std::string head = lower(std::exchange(head_, {}));
    no_body_ = head.find("\ncontent-length:") == std::string::npos &&
               head.find("\ntransfer-encoding:") == std::string::npos;
    head_.clear();
}

ssize_t Connection::read(char* data, size_t size) {
    // The library waits for the end of the connection when a POST has neither length nor encoding;
    // such a request simply has no body (RFC 9112, 6.3).
    if (head_read_ && no_body_) return 0;
    if (input_at_ == input_.size()) {
        // "100 Continue" must leave before its body can come.
        if (!output_.empty() && !send(std::exchange(output_, {}))) return -1;
        if (!fill()) return input_.empty() ? 0 : -1;
    }
    const std::size_t count = std::min(size, input_.size() - input_at_);
    std::copy_n(input_.data() + input_at_, count, data);
    input_at_ += count;
    if (!head_read_) {
        head_.append(data, count);
        if (head_.ends_with("\r\n\r\n") || head_.ends_with("\n\n")) inspect_head();
    }
    return ssize_t(count);
}

ssize_t Connection::write(const char* data, size_t size) {
    output_.append(data, size);
    return ssize_t(size);
}

bool Connection::send(std::string_view data) {
    while (!data.empty()) {
        if (tls_) ERR_clear_error();
        const auto count = tls_ ? SSL_write(tls_.get(), data.data(), int(data.size()))
                                : ::send(socket_.get(), data.data(), data.size(), MSG_NOSIGNAL);
        if (count <= 0) return usable_ = false;
        data.remove_prefix(std::size_t(count));
    }
    return true;
}

bool Connection::deliver() {
    using Mode = Delivery::Mode;
    const Delivery delivery = std::exchange(delivery_, {});
    std::string output = std::exchange(output_, {});
    if (!handled_) announce_close(output);
    if (delivery.delay_ms > 0 && !pause(delivery.delay_ms)) return false;
    const std::size_t head_end = output.find("\r\n\r\n");
    // Past the head and into the body, so that the client has begun to believe in the answer.
    const std::size_t half = head_end == std::string::npos
                                 ? output.size() / 2
                                 : head_end + 4 + (output.size() - head_end - 4) / 2;
    switch (delivery.mode) {
        case Mode::whole:
            if (!send(output)) return false;
            if (!handled_) drain();
            return handled_;
        case Mode::drop:
            return usable_ = false;
        case Mode::hang:
            pause(-1);
            return usable_ = false;
        case Mode::cut:
            send(std::string_view(output).substr(0, half));
            return usable_ = false;
        case Mode::reset:
            send(std::string_view(output).substr(0, half));
            // Give the client the first half before the reset overtakes it.
            pause(50);
            socket_.reset_on_close();
            return usable_ = false;
        case Mode::drip:
            break;
    }
    for (std::size_t at = 0; at < output.size(); at += delivery.piece_bytes) {
        if (at > 0 && !pause(delivery.interval_ms)) return usable_ = false;
        if (!send(std::string_view(output).substr(at, delivery.piece_bytes))) return false;
    }
    return true;
}

void Connection::get_remote_ip_and_port(std::string& ip, int& port) const {
    describe(socket_.get(), ::getpeername, ip, port);
}

void Connection::get_local_ip_and_port(std::string& ip, int& port) const {
    describe(socket_.get(), ::getsockname, ip, port);
}

}  // namespace tavrix::sandbox
