#pragma once

#include "base/text.h"
#include "windows/automation.h"

namespace tavrix::com {

/// Keeps the DLL loaded: every object and every lock that a host holds has one.
class ModuleReference {
  public:
    ModuleReference() noexcept;
    ~ModuleReference();
    ModuleReference(const ModuleReference&) = delete;
    ModuleReference& operator=(const ModuleReference&) = delete;
};

/// IClassFactory::LockServer.
void lock_module(bool lock) noexcept;
/// True while any object or lock is left.
bool module_in_use() noexcept;

/// Keeps the DLL loaded until the process ends. Its thread library takes one of the process's 1088
/// TLS indexes each time it is loaded and never gives it back, so a host that let the DLL come and
/// go would die after a thousand rounds; and what the library keeps between calls is promised for
/// as long as the process lives. Pinned, rather than kept by DllCanUnloadNow: the last
/// CoUninitialize of a process frees DLLs without asking.
void stay_loaded() noexcept;

/// The DLL (or program) that holds this code.
HMODULE module_handle() noexcept;
/// The full path of the DLL (or program) that holds this code.
base::Text module_path();

}  // namespace tavrix::com
