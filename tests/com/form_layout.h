#pragma once

#include "windows/automation.h"

namespace tavrix::test {

/// The test fails for each control of the form whose text is larger than the control, that lies on
/// another one, or that is not wholly inside the form.
void expect_readable_layout(HWND form);

}  // namespace tavrix::test
