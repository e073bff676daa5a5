// How a listening socket gets its port for itself.
#pragma once

#include <boost/asio/ip/tcp.hpp>

namespace tavrix::sandbox {

/// Says of an open socket that is not bound yet that the port is this program's alone, and at once
/// again after it ends.
void claim_port(boost::asio::ip::tcp::acceptor& acceptor, boost::system::error_code& error);

}  // namespace tavrix::sandbox
