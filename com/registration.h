#pragma once

#include "com/server.h"
#include "ports/windows/automation.h"

namespace tavrix::com {

/// Where the entries go: Software\Classes of the machine or of the current user.
enum class Scope { machine, user };

/// Writes the entries of every class. What was there is overwritten. Throws base::AutomationError
/// (access denied for the machine without elevation); what was written until then is taken back.
void register_classes(const Server& server, Scope scope);

/// Removes exactly what register_classes wrote: values that still hold what this DLL writes, and
/// keys that are empty then. Entries of another copy of the DLL stay.
void unregister_classes(const Server& server, Scope scope);

}  // namespace tavrix::com
