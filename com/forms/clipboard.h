#pragma once

#include "base/text.h"
#include "windows/automation.h"

namespace tavrix::com {

/// Puts the text on the clipboard, in the name of the form. The user hears when that is not to be.
void copy_to_clipboard(HWND form, const base::Text& text) noexcept;

}  // namespace tavrix::com
