#pragma once

namespace tavrix::ports {

// On Windows OpenSSL puts its clean-up on the exit list of the whole process, also when it is
// linked into a DLL. A DLL that was unloaded before would leave a call into nowhere there, so a DLL
// takes the clean-up upon itself.

/// Makes OpenSSL ready, off the exit list. The adapters call it before they first use OpenSSL, or
/// libcurl, which uses it too; whoever composes adapters need not know.
void start_openssl();

/// Frees what OpenSSL holds. Call when the DLL goes while the process stays; nothing may use
/// OpenSSL afterwards.
void release_openssl() noexcept;

}  // namespace tavrix::ports
