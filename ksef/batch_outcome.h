#pragma once

#include <chrono>
#include <functional>
#include <string>

#include "ksef/client.h"

namespace tavrix::ksef {

/// What the service says of a closed batch session.
struct BatchOutcome {
    int code = 0;  ///< 0 where the service did not say it
    std::string description;
    int invoices = 0;
    int accepted = 0;
    int rejected = 0;

    bool is_known() const { return code >= 200; }
    bool is_success() const { return code == 200 && rejected == 0; }
};

/// Asks until the session has come to its end, for `longest` at most. An answer that is none costs
/// a round; `log_in` is called where the login has run out.
BatchOutcome wait_for_batch(Client& client, ports::Clock& clock, const std::string& session,
                            std::chrono::seconds longest, const std::function<void()>& log_in);

}  // namespace tavrix::ksef
