#pragma once

#include <cstdint>
#include <variant>

#include "base/date_time.h"
#include "base/text.h"

namespace tavrix::base {

/// A value whose type only the moment decides: a database's field, an argument that may be
/// anything. Null is std::monostate.
using Value = std::variant<std::monostate, bool, std::int64_t, double, DateTime, Text, Bytes>;

}  // namespace tavrix::base
