#pragma once

namespace tavrix::ports {

// On Windows OpenSSL puts its clean-up on the exit list of the whole process, also when it is
// linked into a DLL. A DLL that was unloaded before would leave a call into nowhere there, so a DLL
// takes the clean-up upon itself.

/// Call before anything that uses OpenSSL, as often as you like.
void keep_openssl_off_the_exit_list();

/// Frees what OpenSSL holds. Call when the DLL goes while the process stays; nothing may use
/// OpenSSL afterwards.
void release_openssl() noexcept;

}  // namespace tavrix::ports
