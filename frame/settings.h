#pragma once

#include <string>

#include "ksef/settings.h"
#include "mail/settings.h"
#include "ports/connection_settings.h"

namespace tavrix::frame {

/// What an installation may change: each room's own settings put together. Every value has a
/// built-in default; docs/settings.md lists them all.
struct Settings {
    ports::ConnectionSettings connection;
    ksef::Settings ksef;
    mail::Settings mail;
    /// Natively, the folder that stands for "C:\\" in the trace log's paths.
    std::string trace_root;
};

}  // namespace tavrix::frame
