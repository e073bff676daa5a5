// One request as it came and what it was answered, tokens masked.
#pragma once

#include "sandbox/exchange/request_log.h"
#include "sandbox/store/model.h"

namespace tavrix::sandbox {

Answer request_page(const State& state, const LoggedRequest& entry);

}  // namespace tavrix::sandbox
