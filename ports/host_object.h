#pragma once

#include <cstdint>
#include <span>

#include "base/value.h"

namespace tavrix::ports {

/// An object of the host that the library reads or passes on to one of its own windows, a grid for
/// example. Owned by the host and valid while the call lasts.
class HostObject {
  public:
    virtual ~HostObject() = default;

    /// What the member `name` answers to whole numbers, whether the host made it a property or a
    /// method. Runs the host's code. Throws base::AutomationError in the host's words where there
    /// is no such member, where it refuses, and for Nothing.
    virtual base::Value get(const char16_t* name, std::span<const std::int32_t> arguments) = 0;
};

}  // namespace tavrix::ports
