#pragma once

namespace tavrix::ports {

/// Makes OpenSSL ready, off the process's exit list: its clean-up would run there after the system
/// has stopped other threads in the middle of anything, and frees only what the system takes back
/// anyway. The adapters call it before they first use OpenSSL, or libcurl, which uses it too;
/// whoever composes adapters need not know.
void start_openssl();

}  // namespace tavrix::ports
