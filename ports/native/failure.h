#pragma once

#include <cstring>

#include "base/error.h"
#include "base/text.h"

namespace tavrix::ports {

/// What the system said no to, in its own words. \param code an errno.
[[noreturn]] inline void fail(base::TextView source, int code) {
    throw base::AutomationError(base::ErrorNumber::component_failed, base::Text(source),
                                base::from_utf8(std::strerror(code)));
}

}  // namespace tavrix::ports
