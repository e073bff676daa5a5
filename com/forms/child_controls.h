#pragma once

#include <memory>
#include <vector>

#include "dialogs/resize.h"
#include "windows/automation.h"

namespace tavrix::com {

/// The controls of a form of our own, in pixels. The form outlives the fonts that they are given
/// only by its own end: destroy it first.
std::vector<std::unique_ptr<dialogs::ResizedControl>> child_controls(HWND form);

}  // namespace tavrix::com
