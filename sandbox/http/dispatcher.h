// The way of every request: find the operation, hold it to limits, faults and tokens, carry it out,
// log it.
#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

#include "sandbox/exchange/rate_limits.h"
#include "sandbox/exchange/request_log.h"
#include "sandbox/http/control.h"
#include "sandbox/http/routes.h"
#include "sandbox/service/service.h"

namespace tavrix::sandbox {

class Dispatcher {
  public:
    Dispatcher(Options options, Clock& clock, std::unique_ptr<Store> store);

    struct Outcome {
        Answer answer;
        Delivery delivery;
    };
    /// Safe to call from any thread. Never throws: what escapes an operation is answered with 500.
    Outcome handle(Request& request);
    /// The largest body that a request may have, from its head alone. Safe to call from any thread.
    std::size_t largest_body(Request& request);

  private:
    Answer carry_out(const Route& route, Request& request);
    void check_bearer(const Route& route, const Request& request);
    void check_rate(const Route& route, const Request& request);
    Outcome serve_interface(const Route& route, Request& request);
    Answer serve_own_page(Request& request, std::string_view raw_path);
    void work_between_requests(const std::stop_token& stop);
    void log(const Request& request, const Route* route, const Outcome& outcome,
             const std::vector<Fault>& faults, double duration_ms);

    std::mutex mutex_;
    const Options started_with_;
    Service service_;
    RateLimiter limiter_;
    RequestLog log_;
    std::condition_variable_any package_waits_;
    /// The last member: it must have ended before anything it uses goes.
    std::jthread worker_;
};

}  // namespace tavrix::sandbox
