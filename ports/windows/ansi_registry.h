#pragma once

#include "ports/registry.h"

namespace tavrix::windows {

/// The registry through its ANSI calls.
class AnsiRegistry final : public ports::Registry {
  public:
    std::unique_ptr<ports::RegistryKey> open(ports::RegistryRoot root,
                                             base::ByteView sub_key) override;
};

}  // namespace tavrix::windows
