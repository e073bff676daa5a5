#include <malloc.h>

#include "ports/native/xml/block_size.h"

namespace tavrix::ports {

std::size_t block_size(void* block) {
    return _msize(block);
}

}  // namespace tavrix::ports
