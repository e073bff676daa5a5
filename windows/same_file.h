#pragma once

#include "base/text.h"

namespace tavrix::windows {

/// Whether two paths lead to one file: by another letter, a short name, a share or a junction as
/// well. Where either cannot be opened their texts decide, without upper and lower case.
bool same_file(const base::Text& one, const base::Text& other);

}  // namespace tavrix::windows
