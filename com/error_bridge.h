#pragma once

#include "base/text.h"
#include "windows/automation.h"

namespace tavrix::com {

/// Turns the exception that is being handled into what the host sees: the HRESULT, `information`
/// (may be null) and the thread's error object, and for an argument its place in `argument_index`
/// (may be null). `source` names the class where the exception does not. Call it only inside a
/// catch clause.
///
/// base::AutomationError -> DISP_E_EXCEPTION; ArgumentError -> its code; std::bad_alloc ->
/// E_OUTOFMEMORY; any other
/// -> DISP_E_EXCEPTION with the exception's words.
HRESULT report_current_exception(base::TextView source, EXCEPINFO* information,
                                 UINT* argument_index) noexcept;

/// The same for interfaces whose failures are plain HRESULTs: an AutomationError gives its own
/// number.
HRESULT report_current_exception(base::TextView source) noexcept;

}  // namespace tavrix::com
