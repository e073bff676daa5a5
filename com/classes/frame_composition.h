#pragma once

#include <memory>

#include "frame/cinfo.h"
#include "frame/rejestr.h"

namespace tavrix::com {

// Each public object gets adapters of its own; the hand-over records are the library's.

/// Reads no settings: what needs them reads them when it is called.
std::shared_ptr<frame::CInfo> compose_cinfo();
std::shared_ptr<frame::Rejestr> compose_rejestr();

}  // namespace tavrix::com
