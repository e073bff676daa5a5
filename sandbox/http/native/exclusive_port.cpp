#include "sandbox/http/exclusive_port.h"

namespace tavrix::sandbox {

void claim_port(boost::asio::ip::tcp::acceptor& acceptor, boost::system::error_code& error) {
    acceptor.set_option(boost::asio::ip::tcp::acceptor::reuse_address(true), error);
}

}  // namespace tavrix::sandbox
