#pragma once

#include "windows/automation.h"

namespace tavrix::test {

/// The test fails for each control of the form whose text is larger than the control, that lies on
/// another one, or that is not wholly inside the form.
void expect_readable_layout(HWND form);

/// For the scope's length, programs that start find a screen of that many dots per inch.
class ScreenScale {
  public:
    explicit ScreenScale(DWORD dots_per_inch);
    ~ScreenScale();
    ScreenScale(const ScreenScale&) = delete;
    ScreenScale& operator=(const ScreenScale&) = delete;

    /// What this program found when it started.
    static int of_this_program();
};

}  // namespace tavrix::test
