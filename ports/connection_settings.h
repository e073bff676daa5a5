#pragma once

#include <chrono>
#include <string>

namespace tavrix::ports {

/// What an installation says about connections of every kind.
struct ConnectionSettings {
    /// PEM file with certificates trusted besides the system's; UTF-8 path, empty for none.
    std::string private_ca_file;
    std::chrono::milliseconds connect_timeout{30'000};
    std::chrono::milliseconds no_progress_timeout{60'000};
    /// "" takes the system's proxy, "direct" none, anything else is the proxy's URL.
    std::string proxy;
};

}  // namespace tavrix::ports
