#pragma once

#include <cstdint>
#include <vector>

#include "base/text.h"

namespace tavrix::dialogs {

/// A message with buttons, and which one was chosen.
struct InformatorRecord {
    base::Text header;
    base::Text text;
    /// One caption for each button, thirteen of them; an empty one is a button that is not shown.
    std::vector<base::Text> buttons;
    std::int32_t result = 0;
};

/// The same for orders, with a value and an outcome.
struct OrderInformatorRecord {
    base::Text header;
    base::Text text;
    std::vector<base::Text> buttons;
    std::vector<base::Text> outcome_buttons;
    std::int32_t outcome_count = 0;
    base::Text value;
    std::int32_t outcome = 0;
    std::int32_t result = 0;
};

}  // namespace tavrix::dialogs
