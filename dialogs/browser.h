#pragma once

#include <cstdint>
#include <vector>

#include "base/text.h"

namespace tavrix::dialogs {

/// What the query browser works on.
struct BrowserRecord {
    std::int32_t database_count = 0;
    std::vector<base::Text> databases;
    base::Text connection_1;
    base::Text connection_2;
    base::Text server;
    bool result = false;
};

}  // namespace tavrix::dialogs
