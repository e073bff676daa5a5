#include "sandbox/http/end_request.h"

#include <boost/asio/signal_set.hpp>
#include <csignal>

namespace tavrix::sandbox {

struct EndRequest::Implementation {
    boost::asio::signal_set signals;
};

EndRequest::EndRequest(boost::asio::io_context& io)
    : implementation_(new Implementation{boost::asio::signal_set(io, SIGTERM, SIGINT)}) {
    // Whoever reads standard error may go before the sandbox does, which is no reason to end.
    std::signal(SIGPIPE, SIG_IGN);
    implementation_->signals.async_wait(
        [&io](const boost::system::error_code&, int) { io.stop(); });
}

EndRequest::~EndRequest() = default;

}  // namespace tavrix::sandbox
