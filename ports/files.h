#pragma once

#include "base/text.h"

namespace tavrix::ports {

/// The file system. Paths are the host's own, with backslashes. Failures throw
/// base::AutomationError unless told otherwise.
class Files {
  public:
    virtual ~Files() = default;
    /// True when the attributes of `path` can be read and do not say that it is a folder; false for
    /// everything else, trouble included.
    virtual bool is_file(base::TextView path) = 0;
    /// Replaces what stands at `to`.
    virtual void copy(base::TextView from, base::TextView to) = 0;
    /// Adds `bytes` to the file's end, all of them at once: several processes may append to one
    /// file, and their pieces do not mix. Makes the file when it is missing, but no folder.
    virtual void append(base::TextView path, base::ByteView bytes) = 0;
};

}  // namespace tavrix::ports
