#pragma once

#include <string>
#include <vector>

#include "mail/cmessage.h"

namespace tavrix::cli {

/// The paths of a message's files.
std::vector<std::string> files_of(const mail::CMessage& message);

/// A stranger's text as it may be shown: it must not steer the terminal.
std::string for_people(const base::Text& text);

}  // namespace tavrix::cli
