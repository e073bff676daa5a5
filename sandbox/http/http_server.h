// The transport: HTTP or HTTPS on a TCP port, keep-alive connections, and answers sent the way a
// fault wants them.
#pragma once

#include <memory>
#include <string>

#include "sandbox/basics/certificates.h"
#include "sandbox/http/dispatcher.h"

namespace tavrix::sandbox {

class HttpServer {
  public:
    /// \param identity certificate for HTTPS, null for HTTP; read during the call only.
    HttpServer(Dispatcher& dispatcher, const KeyPair* identity);
    ~HttpServer();
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;

    /// Takes a port, 0 for any free one, and returns it. Throws std::runtime_error when it cannot.
    int bind(const std::string& address, int port);
    /// Serves until stop(); connections in progress end then, hanging ones too.
    void run();
    /// May be called from any thread, more than once.
    void stop();

  private:
    class Implementation;
    std::unique_ptr<Implementation> implementation_;
};

}  // namespace tavrix::sandbox
