#pragma once

#include <cstdint>

#include "ksef/settings.h"

namespace tavrix::ksef {

/// The base address of an environment number: 1 production, 0 demo, any other value test.
inline const base::Text& base_address(const Origins& origins, std::int32_t environment) {
    if (environment == 1) return origins.production;
    if (environment == 0) return origins.demo;
    return origins.test;
}

}  // namespace tavrix::ksef
