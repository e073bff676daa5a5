#pragma once

#include <span>
#include <string_view>

#include "base/text.h"

namespace tavrix::dialogs_program {

/// One window with sample content.
struct Entry {
    /// What the command line calls it.
    std::string_view name;
    base::TextView what;
    /// Shows it, and says what it gave when it was closed.
    base::Text (*show)();
};

/// In the order that the usage text tells them.
std::span<const Entry> entries();

}  // namespace tavrix::dialogs_program
