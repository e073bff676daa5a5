#pragma once

#include "ports/database.h"

namespace tavrix::ksef {

/// The host's own settings, pairs of names and texts.
class HostSetup {
  public:
    explicit HostSetup(ports::Database& database) : database_(database) {}

    /// Whether the setting is "1".
    bool is_on(base::TextView name) {
        return !database_
                    .open(u"select top 1 1 from setup where nazwa='" + base::Text(name) +
                          u"' and wartosc='1'")
                    ->at_end();
    }
    /// The setting's text; "" when it is not set.
    base::Text text(base::TextView name) {
        const auto rows = database_.open(u"select top 1 wartosc from setup where nazwa='" +
                                         base::Text(name) + u"' and wartosc!=''");
        return rows->at_end() ? base::Text() : ports::text_of(rows->field(u"wartosc"));
    }

  private:
    ports::Database& database_;
};

}  // namespace tavrix::ksef
