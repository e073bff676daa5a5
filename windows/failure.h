#pragma once

#include "base/error.h"
#include "windows/automation.h"

namespace tavrix::windows {

/// The system's own words for `code`, without a line break; its hexadecimal digits when it has
/// none.
base::Text system_message(HRESULT code);

/// Throws base::AutomationError with the number `code` and the system's words, or std::bad_alloc
/// for E_OUTOFMEMORY.
[[noreturn]] void throw_failure(HRESULT code, base::TextView source);

/// The same with what the system's last failing function said.
[[noreturn]] inline void throw_last_error(base::TextView source) {
    throw_failure(HRESULT_FROM_WIN32(GetLastError()), source);
}

inline void check(HRESULT code, base::TextView source) {
    if (FAILED(code)) throw_failure(code, source);
}

/// Throws what an object reported through `information`, whose texts it frees.
[[noreturn]] void throw_reported(EXCEPINFO& information, base::TextView source);

}  // namespace tavrix::windows
