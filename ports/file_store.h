#pragma once

#include "base/text.h"

namespace tavrix::ports {

/// Where files go that came from outside. Paths are the host's own, with backslashes. When a
/// function that writes returns, the system has the bytes on its disk; failures throw
/// base::AutomationError.
class FileStore {
  public:
    virtual ~FileStore() = default;
    /// Makes a folder in one that exists; one that is there already is no failure.
    virtual void make_folder(base::TextView path) = 0;
    /// The file with `bytes` and nothing else.
    virtual void write(base::TextView path, base::ByteView bytes) = 0;
    /// Writes `bytes` from the file's beginning; what a longer one has behind them stays.
    virtual void overwrite(base::TextView path, base::ByteView bytes) = 0;
    /// Makes the file, or leaves one that has the same bytes. False when another stands there.
    virtual bool write_new(base::TextView path, base::ByteView bytes) = 0;
};

}  // namespace tavrix::ports
