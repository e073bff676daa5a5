#include "sandbox/http/http_server.h"

#include <sys/socket.h>

#include <stdexcept>
#include <thread>

#include "sandbox/basics/text.h"
#include "sandbox/http/connection.h"
#include "sandbox/http/routes.h"

namespace tavrix::sandbox {
namespace {

constexpr int keep_alive_ms = 60'000;
constexpr std::size_t threads = 32;
constexpr const char* any_path = "[^]*";

/// The connection the current thread serves, for the handler the library calls in between.
thread_local Connection* current_connection = nullptr;

std::vector<std::pair<std::string, std::string>> read_query(std::string_view target) {
    std::vector<std::pair<std::string, std::string>> query;
    std::size_t at = std::min(target.find('?'), target.size());
    while (++at < target.size()) {
        const std::size_t end = std::min(target.find('&', at), target.size());
        const std::string_view part = target.substr(at, end - at);
        const std::size_t equals = std::min(part.find('='), part.size());
        query.emplace_back(percent_decode(part.substr(0, equals), true),
                           percent_decode(part.substr(std::min(equals + 1, part.size())), true));
        at = end;
    }
    return query;
}

Request to_request(const httplib::Request& from, bool https) {
    Request request;
    request.method = from.method;
    request.target = from.target;
    request.path = percent_decode(std::string_view(from.target).substr(0, from.target.find('?')));
    request.query = read_query(from.target);
    for (const auto& [name, value] : from.headers) {
        // The library adds these four to what the client sent.
        if (name == "REMOTE_ADDR" || name == "REMOTE_PORT" || name == "LOCAL_ADDR" ||
            name == "LOCAL_PORT")
            continue;
        request.headers.emplace_back(name, value);
    }
    request.body = from.body;
    request.remote_address = from.remote_addr;
    request.connection = current_connection->number();
    std::string host(request.header("Host"));
    if (host.empty()) host = from.local_addr + ":" + std::to_string(from.local_port);
    request.origin = (https ? "https://" : "http://") + host;
    return request;
}

}  // namespace

class HttpServer::Implementation : public httplib::Server {
  public:
    Implementation(Dispatcher& dispatcher, const KeyPair* identity) : dispatcher_(dispatcher) {
        if (identity != nullptr) load(*identity);
        const auto serve = [this](const httplib::Request& from, httplib::Response& to) {
            answer(from, to);
        };
        Get(any_path, serve).Post(any_path, serve).Put(any_path, serve);
        Patch(any_path, serve).Delete(any_path, serve).Options(any_path, serve);
        set_payload_max_length(largest_body("/storage/"));
        // These two only appear in the header of an answer; the loop below is what keeps
        // connections.
        set_keep_alive_timeout(keep_alive_ms / 1000);
        set_keep_alive_max_count(1'000'000);
        // The library's default also shares the port with whoever asks for it next.
        set_socket_options([](socket_t socket) {
            const int yes = 1;
            setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
        });
        new_task_queue = [] { return new httplib::ThreadPool(threads); };
    }

    void serve() {
        serving_ = true;
        if (!stop_.raised()) listen_after_bind();
        serving_ = false;
    }

    /// The library forgets a stop that comes before it listens, so wait for that short moment.
    void halt() {
        stop_.raise();
        while (serving_ && !is_running()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
        stop();
    }

  private:
    void load(const KeyPair& identity) {
        tls_.reset(SSL_CTX_new(TLS_server_method()));
        const CertificateHandle certificate = read_certificate(identity.certificate_pem);
        const KeyHandle key = read_private_key(identity.private_key_pem);
        SSL_CTX_set_min_proto_version(tls_.get(), TLS1_2_VERSION);
        if (SSL_CTX_use_certificate(tls_.get(), certificate.get()) != 1 ||
            SSL_CTX_use_PrivateKey(tls_.get(), key.get()) != 1)
            throw std::runtime_error("the server's certificate cannot be used");
    }

    void answer(const httplib::Request& from, httplib::Response& to) {
        // The library knows one limit for all of them.
        if (from.body.size() > largest_body(from.target)) {
            to.status = 413;
            return;
        }
        Request request = to_request(from, tls_ != nullptr);
        const auto outcome = dispatcher_.handle(request);
        to.status = outcome.answer.status;
        for (const auto& [name, value] : outcome.answer.headers) to.set_header(name, value);
        if (!outcome.answer.body.empty())
            to.set_content(outcome.answer.body, outcome.answer.content_type);
        current_connection->set_delivery(outcome.delivery);
    }

    bool process_and_close_socket(socket_t socket) override {
        Connection connection(socket, tls_.get(), stop_, ++connections_);
        current_connection = &connection;
        bool ended = !connection.usable();
        while (!ended && connection.wait_for_request(keep_alive_ms)) {
            bool closed = false;
            const bool served =
                process_request(connection, false, closed, [](httplib::Request&) {});
            ended = !connection.deliver() || !served || closed;
        }
        current_connection = nullptr;
        return true;
    }

    Dispatcher& dispatcher_;
    TlsContextHandle tls_;
    StopSignal stop_;
    std::atomic<unsigned> connections_{0};
    std::atomic<bool> serving_{false};
};

HttpServer::HttpServer(Dispatcher& dispatcher, const KeyPair* identity)
    : implementation_(std::make_unique<Implementation>(dispatcher, identity)) {}

HttpServer::~HttpServer() = default;

int HttpServer::bind(const std::string& address, int port) {
    const bool any = port == 0;
    const int bound = any ? implementation_->bind_to_any_port(address)
                          : (implementation_->bind_to_port(address, port) ? port : -1);
    if (bound < 0)
        throw std::runtime_error("cannot listen on " + address + ":" + std::to_string(port) +
                                 "; the port may be taken by another program");
    return bound;
}

void HttpServer::run() {
    implementation_->serve();
}

void HttpServer::stop() {
    implementation_->halt();
}

}  // namespace tavrix::sandbox
