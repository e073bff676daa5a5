#pragma once

#include "base/error.h"

namespace tavrix::pdfsign {

/// Ends the work on a document; the class answers False, the command line shows the words.
[[noreturn]] inline void refuse(base::Text reason) {
    throw base::AutomationError(base::ErrorNumber::component_failed, u"pdfsign", std::move(reason));
}

}  // namespace tavrix::pdfsign
