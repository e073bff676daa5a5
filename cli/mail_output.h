#pragma once

#include <string>
#include <vector>

#include "mail/cmessage.h"

namespace tavrix::cli {

/// The paths of a message's files.
std::vector<std::string> files_of(const mail::CMessage& message);

}  // namespace tavrix::cli
