#pragma once

#include "windows/automation.h"

namespace tavrix::test {

/// The test fails when a part of the form lies where nobody sees it.
void expect_on_the_screen(HWND form);

/// The same, and for each control of the form whose text is larger than the control, that lies on
/// another one, or that is not wholly inside the form.
void expect_readable_layout(HWND form);

}  // namespace tavrix::test
