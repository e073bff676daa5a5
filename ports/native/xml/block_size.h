#pragma once

#include <cstddef>

namespace tavrix::ports {

/// What the system made of what was asked for; `block` is not null.
std::size_t block_size(void* block);

}  // namespace tavrix::ports
