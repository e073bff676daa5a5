#pragma once

#include "com/registry_entry.h"
#include "com/server.h"

namespace tavrix::com {

/// Where the entries go: Software\Classes of the machine or of the current user.
enum class Scope { machine, user };

/// Writes the entries of every class and of the type library. What was there, another copy's
/// entries included, is overwritten. A registration for the machine takes the current user's own
/// entries out, whatever copy they name: they would hide it from that user. Throws
/// base::AutomationError (access denied for the machine without elevation, with a text that names
/// the way for the user alone); what was written until then is taken back unless a copy was
/// registered before.
void register_classes(const Server& server, Scope scope, RegistryDoor& door);

/// Removes what register_classes wrote, as far as it names this very DLL, however its path is
/// spelt: a class or type library that another copy was registered for meanwhile stays that copy's,
/// whole. What the DLLs of 32 and of 64 bits share goes with the last of them. Throws
/// base::AutomationError when entries must not be removed; where there are none, nothing needs to
/// be changed.
void unregister_classes(const Server& server, Scope scope, RegistryDoor& door);

/// The user's entries, then the machine's.
void unregister_everywhere(const Server& server, RegistryDoor& door);

}  // namespace tavrix::com
