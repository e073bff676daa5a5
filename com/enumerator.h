#pragma once

#include <functional>

#include "com/unknown.h"
#include "windows/variant.h"

namespace tavrix::com {

/// What `For Each` walks through: the elements 0 to `count` - 1, each fetched when its turn comes.
windows::ComPointer<IUnknown> make_enumerator(std::size_t count,
                                              std::function<windows::Variant(std::size_t)> element);

}  // namespace tavrix::com
