#pragma once

#include "windows/automation.h"
#include "windows/owned.h"

namespace tavrix::windows {

struct KeyHandleTraits {
    using Handle = HKEY;
    static void free(HKEY key) noexcept { RegCloseKey(key); }
};
/// An open key of the registry.
using KeyHandle = Owned<KeyHandleTraits>;

}  // namespace tavrix::windows
