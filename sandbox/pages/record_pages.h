// The pages about one session, one invoice or one request, and the files of them.
#pragma once

#include <optional>

#include "sandbox/pages/page.h"

namespace tavrix::sandbox {

/// Nothing for an address that is no record's.
std::optional<Answer> page_of_record(const PageRoom& room, const Request& request);

}  // namespace tavrix::sandbox
