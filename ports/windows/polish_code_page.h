#pragma once

#include <memory>

#include "ports/code_page.h"

namespace tavrix::ports {

/// Code page 1250 on a Windows of any language, for programs that have no host whose code page
/// would count; the system reads the others.
std::unique_ptr<CodePage> make_polish_code_page();

}  // namespace tavrix::ports
