#include <malloc.h>

#include "ports/native/xml/block_size.h"

namespace tavrix::ports {

std::size_t block_size(void* block) {
    return malloc_usable_size(block);
}

}  // namespace tavrix::ports
