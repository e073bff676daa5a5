#pragma once

#include <cstdint>
#include <optional>

#include "base/date_time.h"

namespace tavrix::mail {

/// The limit of one exchange of the socket form: a minute on the clock on the wall, which may be
/// set meanwhile.
class Watchdog {
  public:
    explicit Watchdog(const base::DateTime& start);

    /// The run result that ends the exchange now: nothing before the deadline and in its very
    /// second; timed_out later on its day, date_changed on any other day. So an exchange that
    /// begins in the last minute of a day ends at once.
    std::optional<std::int32_t> look(const base::DateTime& now) const;

  private:
    base::DateTime deadline_;
};

}  // namespace tavrix::mail
