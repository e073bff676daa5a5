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

/// The DLL (or program) that holds this code.
HMODULE module_handle() noexcept;
/// The full path of the DLL (or program) that holds this code.
base::Text module_path();

}  // namespace tavrix::com
