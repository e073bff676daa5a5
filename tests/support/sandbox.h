#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "ports/http.h"

namespace tavrix::test {

using Json = nlohmann::ordered_json;

/// A tavrix-sandbox of this build on a free loopback port, stopped by its pid with the object.
class Sandbox {
  public:
    explicit Sandbox(const std::string& arguments = "");
    ~Sandbox();
    Sandbox(const Sandbox&) = delete;
    Sandbox& operator=(const Sandbox&) = delete;

    /// "http://127.0.0.1:PORT"
    const std::string& origin() const noexcept { return origin_; }
    std::string port() const { return origin_.substr(origin_.rfind(':') + 1); }
    /// Adds trouble: {"step": ..., "kind": ...}; see docs/sandbox.md.
    void fault(const Json& fault);
    /// Forgets requests, sessions, invoices and faults.
    void reset();
    Json state();
    /// The logged requests of one step.
    std::vector<Json> requests(const std::string& step);
    /// Moves the sandbox's clock forward.
    void advance(std::chrono::milliseconds duration);
    /// Any request of the service's or the sandbox's own; gives the body, throws unless the status
    /// is below 300.
    std::string call(const std::string& method, const std::string& path,
                     const std::string& body = "");

  private:
    std::FILE* pipe_;
    pid_t pid_;
    std::string origin_;
    std::unique_ptr<ports::Http> http_;
};

}  // namespace tavrix::test
