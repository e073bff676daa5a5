#pragma once

#include "base/text.h"
#include "windows/automation.h"

namespace tavrix::com {

/// "{01234567-89AB-CDEF-0123-456789ABCDEF}"
base::Text text_of(const GUID& id);

}  // namespace tavrix::com
