// What somebody needs who has just started the sandbox: address, token, a first command.
#pragma once

#include <string>

#include "sandbox/pages/page.h"

namespace tavrix::sandbox {

/// \param origin scheme, host and port that the reader used.
std::string start_section(const Options& options, const std::string& origin);

}  // namespace tavrix::sandbox
