#pragma once

#include "base/text.h"
#include "base/version.h"

namespace tavrix::frame {

/// "10.0.36": major, minor, revision, in decimal without padding.
inline base::Text version_text() {
    return base::to_decimal(base::version_major) + u"." + base::to_decimal(base::version_minor) +
           u"." + base::to_decimal(base::version_revision);
}

}  // namespace tavrix::frame
