// The transport: HTTP or HTTPS on a TCP port, keep-alive connections, and answers sent the way a
// fault wants them. One thread serves every connection; one that waits costs its memory only.
#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "sandbox/basics/certificates.h"
#include "sandbox/http/dispatcher.h"

namespace tavrix::sandbox {

/// How long a client may take, and how many there may be.
struct Limits {
    /// Between two requests, or before the first.
    std::chrono::milliseconds idle{60'000};
    /// From a request's first byte to the end of its headers, and for a TLS handshake.
    std::chrono::milliseconds head{10'000};
    std::chrono::milliseconds body{60'000};
    /// To take an answer, or one piece of it.
    std::chrono::milliseconds answer{60'000};
    /// To close its side once the server has closed its own.
    std::chrono::milliseconds farewell{2'000};
    /// Below the 1024 open files that systems give a program unless told otherwise.
    unsigned connections = 800;
    /// Of all bodies together: five of the largest parts of packages, and what else there is.
    std::size_t body_bytes = 512 * 1024 * 1024;
};

class HttpServer {
  public:
    /// \param identity certificate for HTTPS, null for HTTP; read during the call only.
    explicit HttpServer(const KeyPair* identity, Limits limits = {});
    ~HttpServer();
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;

    /// Takes a port, 0 for any free one, and returns it. Throws std::runtime_error when it cannot.
    int bind(const std::string& address, int port);
    /// Serves until stop(); connections in progress end then, hanging ones too.
    void run(Dispatcher& dispatcher);
    /// May be called from any thread, more than once, also before run().
    void stop();
    /// From now on the user's or the system's wish that the program ends is a call of stop().
    void stop_on_signals();

  private:
    class Implementation;
    std::unique_ptr<Implementation> implementation_;
};

}  // namespace tavrix::sandbox
