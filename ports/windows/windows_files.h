#pragma once

#include "ports/files.h"

namespace tavrix::windows {

class WindowsFiles final : public ports::Files {
  public:
    bool is_file(base::TextView path) override;
    void copy(base::TextView from, base::TextView to) override;
    void append(base::TextView path, base::ByteView bytes) override;
};

}  // namespace tavrix::windows
