#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>
#include <thread>

namespace tavrix::test {

/// The server's end of one connection. Closes with its destruction.
class Peer {
  public:
    explicit Peer(std::intptr_t socket) noexcept : socket_(socket) {}
    ~Peer() { close(); }
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;

    std::intptr_t socket() const noexcept { return socket_; }
    /// Some of what came, waiting for the first byte; empty when the client has closed.
    std::string read_some();
    /// All that comes until `end`, with it; what came when the client closes before.
    std::string read_until(const std::string& end);
    /// False when the client takes no more.
    bool write(const std::string& bytes);
    /// Ends the connection with a reset instead of an orderly end.
    void reset();
    void close();

  private:
    std::intptr_t socket_;
};

/// A server on a free port of 127.0.0.1 with a thread of its own, which serves one client after the
/// other.
class LoopbackServer {
  public:
    /// `serve` must come to its end when the client closes.
    explicit LoopbackServer(std::function<void(Peer&)> serve);
    /// Waits for the end of `serve`.
    ~LoopbackServer();
    LoopbackServer(const LoopbackServer&) = delete;
    LoopbackServer& operator=(const LoopbackServer&) = delete;

    std::uint16_t port() const noexcept { return port_; }
    /// "127.0.0.1:PORT"
    std::u16string address() const;

  private:
    void accept_clients();

    std::function<void(Peer&)> serve_;
    std::intptr_t listener_;
    std::uint16_t port_ = 0;
    std::atomic<bool> stopping_ = false;
    std::thread thread_;
};

}  // namespace tavrix::test
