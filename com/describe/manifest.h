#pragma once

#include <string>

#include "com/server.h"

namespace tavrix::com {

// Registration-free activation: a host whose own manifest names the assembly creates the classes
// from the DLL beside it, without an entry in the registry. Both texts are XML in UTF-8.

/// The assembly's manifest: the DLL `file_name`, its classes and its type library. It lies beside
/// the DLL and inside it: where both have the assembly's name, Windows looks into the DLL first.
std::string assembly_manifest(const Server& server, const std::string& file_name);

/// An example of what the host's manifest has to say, for a program named host.exe.
std::string host_manifest(const Server& server);

}  // namespace tavrix::com
