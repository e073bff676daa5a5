// The byte stream of a connection, plain or inside TLS. Every call ends by itself once the time
// given to expires_after() has passed.
#pragma once

// The next header needs it and does not say so.
// clang-format off
#include <utility>
// clang-format on

#include <boost/asio/awaitable.hpp>
#include <boost/asio/redirect_error.hpp>
#include <boost/asio/ssl/context.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/ssl/ssl_stream.hpp>
#include <optional>
#include <string_view>

namespace tavrix::sandbox {

namespace asio = boost::asio;
namespace beast = boost::beast;
using boost::system::error_code;

/// For an operation that is awaited and tells its error here instead of throwing it.
inline auto noting(error_code& error) {
    return asio::redirect_error(asio::use_awaitable, error);
}

class Link {
  public:
    /// \param tls null for a plain connection.
    Link(asio::ip::tcp::socket socket, asio::ssl::context* tls) : stream_(std::move(socket)) {
        error_code ignored;
        stream_.socket().set_option(asio::ip::tcp::no_delay(true), ignored);
        if (tls != nullptr) tls_.emplace(stream_, *tls);
    }

    bool secure() const { return tls_.has_value(); }
    const asio::ip::tcp::socket& socket() const { return stream_.socket(); }
    asio::any_io_executor executor() { return stream_.get_executor(); }
    void expires_after(std::chrono::milliseconds time) { stream_.expires_after(time); }
    void expires_never() { stream_.expires_never(); }

    /// The TLS handshake, where there is one.
    asio::awaitable<bool> open() {
        error_code error;
        if (tls_) co_await tls_->async_handshake(asio::ssl::stream_base::server, noting(error));
        co_return !error;
    }

    asio::awaitable<std::size_t> read_some(asio::mutable_buffer into, error_code& error) {
        if (tls_) co_return co_await tls_->async_read_some(into, noting(error));
        co_return co_await stream_.async_read_some(into, noting(error));
    }

    asio::awaitable<bool> write(std::string_view data) {
        error_code error;
        const asio::const_buffer buffer(data.data(), data.size());
        if (tls_)
            co_await asio::async_write(*tls_, buffer, noting(error));
        else
            co_await asio::async_write(stream_, buffer, noting(error));
        co_return !error;
    }

    /// Ends the sending side and reads what is still coming, within limits: a close with unread
    /// data would be a reset, and destroy the last answer on its way.
    asio::awaitable<void> finish() {
        error_code error;
        if (tls_) co_await tls_->async_shutdown(noting(error));
        stream_.socket().shutdown(asio::ip::tcp::socket::shutdown_send, error);
        std::string unwanted(16 * 1024, '\0');
        std::size_t read = 0;
        for (constexpr std::size_t most = 16 * 1024 * 1024; !error && read < most;)
            read += co_await stream_.async_read_some(asio::buffer(unwanted), noting(error));
    }

    /// Closes with a TCP reset.
    void reset() {
        error_code ignored;
        stream_.socket().set_option(asio::socket_base::linger(true, 0), ignored);
        stream_.socket().close(ignored);
    }

  private:
    beast::tcp_stream stream_;
    std::optional<beast::ssl_stream<beast::tcp_stream&>> tls_;
};

}  // namespace tavrix::sandbox
