#pragma once

#include <string>

#include "base/text.h"

namespace tavrix::cli {

/// A stranger's text as it may be shown: it must not steer the terminal.
std::string for_people(const base::Text& text);
/// The same on one line, where it must not look like a line of ours.
std::string line_for_people(const base::Text& text);

}  // namespace tavrix::cli
