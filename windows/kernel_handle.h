#pragma once

#include "windows/automation.h"
#include "windows/owned.h"

namespace tavrix::windows {

struct KernelHandleTraits {
    using Handle = HANDLE;
    static void free(HANDLE handle) noexcept { CloseHandle(handle); }
};
/// A process, thread or file. "None" is the null handle: CreateFile's own "none" is another one.
using KernelHandle = Owned<KernelHandleTraits>;

}  // namespace tavrix::windows
