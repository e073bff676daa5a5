#pragma once

#include "frame/settings.h"

namespace tavrix::com {

/// The settings file beside the DLL, wherever that stands and whatever it was renamed to, as it is
/// now: a change needs no restart of the host. Throws base::AutomationError when the file cannot be
/// taken as it stands.
frame::Settings load_installed_settings();

}  // namespace tavrix::com
