#pragma once

#include <vector>

#include "ports/files.h"

namespace tavrix::ksef {

/// Cuts the file at `source` into pieces of 100 000 000 bytes, the last one shorter, and gives
/// their paths in order: the folder, a backslash, the file's own name, a point and the piece's
/// number, "001" and on. Nothing is made of an empty file. Throws base::AutomationError, and then
/// none of the pieces is left.
std::vector<base::Text> split_file(ports::DataFiles& files, const base::Text& source,
                                   const base::Text& folder);

}  // namespace tavrix::ksef
