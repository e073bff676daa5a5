#include "sandbox/http/http_server.h"

#include <boost/asio/co_spawn.hpp>
#include <boost/asio/redirect_error.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <optional>
#include <stdexcept>

#include "sandbox/http/connection.h"
#include "sandbox/http/end_request.h"
#include "sandbox/http/exclusive_port.h"

namespace tavrix::sandbox {
namespace {

namespace asio = boost::asio;
using asio::ip::tcp;
using boost::system::error_code;

/// So many more than may be served are told so; beyond them even that would cost too much.
constexpr unsigned turned_away_at_once = 64;

asio::ssl::context tls_context(const KeyPair& identity) {
    asio::ssl::context context(asio::ssl::context::tls_server);
    SSL_CTX_set_min_proto_version(context.native_handle(), TLS1_2_VERSION);
    context.use_certificate(asio::buffer(identity.certificate_pem), asio::ssl::context::pem);
    context.use_private_key(asio::buffer(identity.private_key_pem), asio::ssl::context::pem);
    return context;
}

}  // namespace

class HttpServer::Implementation {
  public:
    Implementation(const KeyPair* identity, Limits limits) : limits_(limits) {
        if (identity != nullptr) tls_.emplace(tls_context(*identity));
    }

    int bind(const std::string& address, int port) {
        error_code error;
        const auto endpoints = tcp::resolver(io_).resolve(address, std::to_string(port),
                                                          tcp::resolver::passive, error);
        for (const auto& entry : endpoints) {
            error = listen(entry.endpoint());
            if (!error) return acceptor_.local_endpoint().port();
        }
        throw std::runtime_error(
            "cannot listen on " + address + ":" + std::to_string(port) + ": " + error.message() +
            (error == asio::error::address_in_use ? "; the port may be taken by another program"
             : error == asio::error::access_denied
                 ? "; the port may be taken by another program or "
                   "kept back by the system; take another"
                 : ""));
    }

    void run(Dispatcher& dispatcher) {
        asio::co_spawn(io_, accept({dispatcher, tls_ ? &*tls_ : nullptr, limits_, body_bytes_}),
                       [](std::exception_ptr) {});
        io_.run();
    }

    void stop() { io_.stop(); }

    void stop_on_signals() { end_request_.emplace(io_); }

  private:
    error_code listen(const tcp::endpoint& endpoint) {
        error_code error;
        acceptor_ = tcp::acceptor(io_);
        acceptor_.open(endpoint.protocol(), error);
        if (!error) claim_port(acceptor_, error);
        if (!error) acceptor_.bind(endpoint, error);
        if (!error) acceptor_.listen(tcp::acceptor::max_listen_connections, error);
        return error;
    }

    asio::awaitable<void> accept(Premises premises) {
        for (unsigned number = 1;; ++number) {
            error_code error;
            tcp::socket socket =
                co_await acceptor_.async_accept(asio::redirect_error(asio::use_awaitable, error));
            if (error) {
                // Out of descriptors, most likely; asking again at once would burn a processor.
                asio::steady_timer timer(io_, std::chrono::milliseconds(100));
                co_await timer.async_wait(asio::use_awaitable);
            } else if (open_ < limits_.connections) {
                take(serve_connection(std::move(socket), premises, number));
            } else if (open_ < limits_.connections + turned_away_at_once) {
                take(turn_away(std::move(socket), premises));
            }
        }
    }

    void take(asio::awaitable<void> conversation) {
        ++open_;
        asio::co_spawn(io_, std::move(conversation), [this](std::exception_ptr) { --open_; });
    }

    Limits limits_;
    std::optional<asio::ssl::context> tls_;
    /// Before the context, with which the connections end.
    std::size_t body_bytes_ = 0;
    /// One thread runs it: what is behind the dispatcher is done one request at a time anyway.
    asio::io_context io_{1};
    tcp::acceptor acceptor_{io_};
    std::optional<EndRequest> end_request_;
    unsigned open_ = 0;
};

HttpServer::HttpServer(const KeyPair* identity, Limits limits)
    : implementation_(std::make_unique<Implementation>(identity, limits)) {}

HttpServer::~HttpServer() = default;

int HttpServer::bind(const std::string& address, int port) {
    return implementation_->bind(address, port);
}

void HttpServer::run(Dispatcher& dispatcher) {
    implementation_->run(dispatcher);
}

void HttpServer::stop() {
    implementation_->stop();
}

void HttpServer::stop_on_signals() {
    implementation_->stop_on_signals();
}

}  // namespace tavrix::sandbox
