#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "base/text.h"

namespace tavrix::dialogs {

class BrowserSession;

/// What the query browser worked on. It stays when the window is gone, so no password is in it.
struct BrowserRecord {
    std::int32_t database_count = 0;
    std::vector<base::Text> databases;
    base::Text connection;  ///< both halves
    base::Text server;
    bool result = false;
};

/// The query browser on the user's desktop.
class BrowserWindow {
  public:
    virtual ~BrowserWindow() = default;
    /// Returns when the window was closed: the number of the database that the user chose, nothing
    /// when none was, or when the window was open already.
    virtual std::optional<std::size_t> show(BrowserSession& session) noexcept = 0;
};

}  // namespace tavrix::dialogs
