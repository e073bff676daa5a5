#pragma once

#include "base/date_time.h"

namespace tavrix::ports {

/// How the user writes what is not text.
class Locale {
  public:
    virtual ~Locale() = default;
    /// The locale's general date as automation turns a date into text: short date and time, the
    /// date alone at midnight.
    virtual base::Text general_date(const base::DateTime& moment) = 0;
};

}  // namespace tavrix::ports
