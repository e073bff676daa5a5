#include "sandbox/http/exclusive_port.h"

namespace tavrix::sandbox {

// The address reused would let another program take the port from under this one.
void claim_port(boost::asio::ip::tcp::acceptor& acceptor, boost::system::error_code& error) {
    using Exclusive = boost::asio::detail::socket_option::boolean<SOL_SOCKET, SO_EXCLUSIVEADDRUSE>;
    acceptor.set_option(Exclusive(true), error);
}

}  // namespace tavrix::sandbox
