#pragma once

#include <cstdint>

namespace tavrix::ports {

/// What the system says it is: Windows' own numbers, as far as the host's manifest lets it.
struct SystemVersion {
    /// Why it does not say; 0 when it does.
    std::uint32_t error = 0;
    /// 2 is Windows NT and everything since.
    std::uint32_t platform = 2;
    std::int32_t major = 10;
    std::int32_t minor = 0;
};

}  // namespace tavrix::ports
