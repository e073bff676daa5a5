#pragma once

#include <memory>

#include "ports/code_page.h"

namespace tavrix::test {

/// The platform's own adapter, on a system whose code page is 1250.
std::unique_ptr<ports::CodePage> system_code_page();

}  // namespace tavrix::test
