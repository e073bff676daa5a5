#pragma once

#include "base/text.h"

namespace tavrix::dialogs {

/// A host's text as the system's edit controls show it. Hosts end lines in their own ways (CR, LF,
/// both); the controls know one.
base::Text with_edit_line_ends(base::TextView text);

}  // namespace tavrix::dialogs
