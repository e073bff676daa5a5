#pragma once

#include "base/text.h"

namespace tavrix::ports {

/// Text files as the platform's scripting runtime reads them.
class TextFiles {
  public:
    virtual ~TextFiles() = default;
    /// The whole text in the system's ANSI code page. Throws base::AutomationError with the hosts'
    /// run-time errors: 53 for a missing file, 76 for a missing folder, 70 for one that may not be
    /// read, 62 for an empty one.
    virtual base::Text read_all(base::TextView path) = 0;
};

}  // namespace tavrix::ports
