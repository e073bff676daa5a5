// How a user or the system tells the program to end.
#pragma once

#include <boost/asio/io_context.hpp>
#include <memory>

namespace tavrix::sandbox {

/// Stops `io` when the program is asked to end: a signal, Ctrl+C, or a console that is closed. One
/// for a process; where the system waits for an answer, its end is the answer. Output that nobody
/// reads any more is no such request.
class EndRequest {
  public:
    explicit EndRequest(boost::asio::io_context& io);
    ~EndRequest();
    EndRequest(const EndRequest&) = delete;
    EndRequest& operator=(const EndRequest&) = delete;

  private:
    struct Implementation;
    std::unique_ptr<Implementation> implementation_;
};

}  // namespace tavrix::sandbox
