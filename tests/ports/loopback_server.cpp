#include "tests/ports/loopback_server.h"

#ifdef _WIN32
// clang-format off
#include <winsock2.h>
#include <ws2tcpip.h>
// clang-format on
#else
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>
#endif

#include <stdexcept>

#include "base/text.h"

namespace tavrix::test {
namespace {

#ifdef _WIN32
using Socket = SOCKET;
using Length = int;
constexpr int no_signal = 0;
const auto close_socket = &closesocket;

void start_sockets() {
    static const int started = [] {
        WSADATA data;
        return WSAStartup(MAKEWORD(2, 2), &data);
    }();
    if (started != 0) throw std::runtime_error("WSAStartup");
}
#else
using Socket = int;
using Length = socklen_t;
constexpr int no_signal = MSG_NOSIGNAL;
const auto close_socket = &::close;

void start_sockets() {}
#endif

Socket handle(std::intptr_t socket) {
    return static_cast<Socket>(socket);
}

std::intptr_t new_socket() {
    return static_cast<std::intptr_t>(::socket(AF_INET, SOCK_STREAM, 0));
}

sockaddr_in loopback(std::uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    return address;
}

}  // namespace

std::string Peer::read_some() {
    char buffer[16 * 1024];
    const auto count = recv(handle(socket_), buffer, sizeof buffer, 0);
    return count > 0 ? std::string(buffer, static_cast<std::size_t>(count)) : std::string();
}

std::string Peer::read_until(const std::string& end) {
    std::string text;
    while (!text.ends_with(end)) {
        const std::string some = read_some();
        if (some.empty()) break;
        text += some;
    }
    return text;
}

bool Peer::write(const std::string& bytes) {
    // A blocking socket takes all of it, or the client is gone.
    const auto size = static_cast<int>(bytes.size());
    return ::send(handle(socket_), bytes.data(), size, no_signal) == size;
}

void Peer::reset() {
    linger hard{};
    hard.l_onoff = 1;
    setsockopt(handle(socket_), SOL_SOCKET, SO_LINGER, reinterpret_cast<const char*>(&hard),
               sizeof hard);
    close();
}

void Peer::close() {
    if (socket_ < 0) return;
    close_socket(handle(socket_));
    socket_ = -1;
}

LoopbackServer::LoopbackServer(std::function<void(Peer&)> serve) : serve_(std::move(serve)) {
    start_sockets();
    listener_ = new_socket();
    sockaddr_in address = loopback(0);
    auto* generic = reinterpret_cast<sockaddr*>(&address);
    Length size = sizeof address;
    if (listener_ < 0 || bind(handle(listener_), generic, size) != 0 ||
        listen(handle(listener_), 8) != 0 || getsockname(handle(listener_), generic, &size) != 0) {
        throw std::runtime_error("no loopback server");
    }
    port_ = ntohs(address.sin_port);
    thread_ = std::thread([this] { accept_clients(); });
}

LoopbackServer::~LoopbackServer() {
    // A connection of our own wakes the thread, whichever system it waits in.
    stopping_ = true;
    const Peer waker(new_socket());
    sockaddr_in address = loopback(port_);
    ::connect(handle(waker.socket()), reinterpret_cast<sockaddr*>(&address), sizeof address);
    thread_.join();
    close_socket(handle(listener_));
}

void LoopbackServer::accept_clients() {
    for (;;) {
        Peer peer(static_cast<std::intptr_t>(accept(handle(listener_), nullptr, nullptr)));
        if (peer.socket() < 0 || stopping_) return;
        serve_(peer);
    }
}

std::u16string LoopbackServer::address() const {
    return u"127.0.0.1:" + base::to_decimal(port_);
}

}  // namespace tavrix::test
