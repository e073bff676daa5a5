#pragma once

#include <cstdint>

#include "base/secret.h"
#include "ports/database.h"

namespace tavrix::ksef {

/// A setting of one of the host's users, from uzytkownicy_setup; empty where there is none. `name`
/// is one of the library's own. Throws base::AutomationError when the query fails.
base::SecretUtf8 user_setting(ports::Database& database, base::TextView name, std::int32_t user);

}  // namespace tavrix::ksef
