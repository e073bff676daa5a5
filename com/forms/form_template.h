#pragma once

#include <cstddef>
#include <vector>

#include "windows/automation.h"

namespace tavrix::com {

/// An extended dialog template of the module that holds this code, ready for
/// CreateDialogIndirectParam, with the font that the user chose for messages in place of its own;
/// empty when the module has no such template. Sizes in a template are parts of its font's size, so
/// the whole form follows.
std::vector<std::byte> template_in_user_font(int number);

}  // namespace tavrix::com
