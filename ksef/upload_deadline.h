#pragma once

#include <optional>

#include "ports/clock.h"
#include "ports/http.h"

namespace tavrix::ksef {

/// The service's own time, whatever this machine's clock says: read from the `Date` of an answer
/// (RFC 9110, 6.6.1) and counted on from there.
class ServiceTime {
  public:
    ServiceTime(ports::Clock& clock, const ports::HttpReply& reply);
    /// Whether the permission in `url` still holds; one that does not say until when, by the
    /// parameter `se`, does, and so does any where the service did not tell its time.
    bool is_in_time(std::string_view url) const;

  private:
    ports::Clock& clock_;
    std::chrono::milliseconds read_at_;
    std::optional<std::chrono::seconds> service_then_;
};

}  // namespace tavrix::ksef
