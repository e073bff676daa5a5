#pragma once

#include <string>

#include "base/text.h"

namespace tavrix::test {

/// Runs a command to its end and gives what it wrote, in the console's code page.
std::string run_program(const base::Text& command);

}  // namespace tavrix::test
