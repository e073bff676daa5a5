// One TCP connection, from its first byte to its end: reading requests, having them answered, and
// sending the answers the way a fault wants them.
#pragma once

// The next header needs it and does not say so.
// clang-format off
#include <utility>
// clang-format on

#include <boost/asio/awaitable.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ssl/context.hpp>

#include "sandbox/http/dispatcher.h"
#include "sandbox/http/http_server.h"

namespace tavrix::sandbox {

/// What connections share; outlives them.
struct Premises {
    Dispatcher& dispatcher;
    /// Null for plain HTTP.
    boost::asio::ssl::context* tls;
    const Limits& limits;
    /// Of all bodies that are being read or dealt with.
    std::size_t& body_bytes;
};

/// \param number counts connections.
boost::asio::awaitable<void> serve_connection(boost::asio::ip::tcp::socket socket,
                                              Premises premises, unsigned number);

/// Tells a client that there are too many, if that costs no handshake.
boost::asio::awaitable<void> turn_away(boost::asio::ip::tcp::socket socket, Premises premises);

}  // namespace tavrix::sandbox
