// One TCP connection, plain or TLS, as the HTTP library's stream. It gathers an answer before
// sending it, which saves system calls and lets a fault decide how the answer leaves.
#pragma once

#include <httplib.h>

#include <atomic>
#include <string>

#include "sandbox/basics/openssl_handles.h"
#include "sandbox/exchange/faults.h"

namespace tavrix::sandbox {

/// Closes a socket when it goes; may be told to reset instead.
class SocketHandle {
  public:
    explicit SocketHandle(int socket) : socket_(socket) {}
    ~SocketHandle();
    SocketHandle(const SocketHandle&) = delete;
    SocketHandle& operator=(const SocketHandle&) = delete;
    int get() const { return socket_; }
    /// Makes the close a TCP reset.
    void reset_on_close();

  private:
    int socket_;
};

/// Wakes everything that waits when the server stops.
class StopSignal {
  public:
    StopSignal();
    ~StopSignal();
    StopSignal(const StopSignal&) = delete;
    StopSignal& operator=(const StopSignal&) = delete;
    void raise();
    bool raised() const { return raised_; }
    int descriptor() const { return descriptor_; }

  private:
    int descriptor_;
    std::atomic<bool> raised_{false};
};

class Connection : public httplib::Stream {
  public:
    /// \param tls null for plain HTTP; its handshake is done here. \param number counts
    /// connections.
    Connection(int socket, SSL_CTX* tls, const StopSignal& stop, unsigned number);
    ~Connection() override;

    unsigned number() const { return number_; }
    /// False when the TLS handshake failed.
    bool usable() const { return usable_; }
    /// Waits until a request begins; false on stop, time-out or a close by the client.
    bool wait_for_request(int timeout_ms);
    /// How the answer gathered next is to leave. Not called for what the library refuses by itself:
    /// then the rest of the request is unread and the connection ends with the answer.
    void set_delivery(const Delivery& delivery) {
        delivery_ = delivery;
        handled_ = true;
    }
    /// Sends what was gathered; false when the connection is of no further use.
    bool deliver();

    bool is_readable() const override { return true; }
    bool is_writable() const override { return true; }
    ssize_t read(char* data, size_t size) override;
    ssize_t write(const char* data, size_t size) override;
    void get_remote_ip_and_port(std::string& ip, int& port) const override;
    void get_local_ip_and_port(std::string& ip, int& port) const override;
    socket_t socket() const override { return socket_.get(); }

  private:
    enum class Wait { ready, timed_out, stopped };
    Wait wait_for(short events, int timeout_ms) const;
    /// Sleeps; false when the server stopped or the client went away meanwhile.
    bool pause(int milliseconds) const;
    bool fill();
    /// Ends the sending side and reads what is still coming, so that a close does not destroy the
    /// answer on its way.
    void drain();
    bool send(std::string_view data);
    /// Notes whether the request whose head has just been read brings a body.
    void inspect_head();

    SocketHandle socket_;
    TlsHandle tls_;
    const StopSignal& stop_;
    unsigned number_;
    bool usable_ = true;
    std::string input_;
    std::size_t input_at_ = 0;
    bool head_read_ = false;
    bool no_body_ = false;
    bool handled_ = false;
    std::string head_;
    std::string output_;
    Delivery delivery_;
};

}  // namespace tavrix::sandbox
