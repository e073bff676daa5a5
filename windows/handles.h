#pragma once

#include "windows/automation.h"
#include "windows/owned.h"

namespace tavrix::windows {

/// A process, thread or file. "None" is the null handle: CreateFile's own "none" is another one.
using KernelHandle = Owned<HANDLE, CloseHandle>;
/// An open key of the registry.
using KeyHandle = Owned<HKEY, RegCloseKey>;

}  // namespace tavrix::windows
