#pragma once

#include <memory>

#include "ksef/ksef_comm.h"

namespace tavrix::com {

// Each public object gets adapters of its own, set up from the settings file as it stands when the
// object is created: objects share nothing, and a change of settings needs no restart of the host.

/// Throws base::AutomationError when the settings file beside the DLL cannot be read.
std::shared_ptr<ksef::KseF_comm> compose_ksef_comm();

}  // namespace tavrix::com
