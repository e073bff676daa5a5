// What a client may ask about its limits.
#pragma once

#include "sandbox/service/service.h"

namespace tavrix::sandbox {

Answer rate_limits(Service& service, Request& request);
Answer context_limits(Service& service, Request& request);
Answer subject_limits(Service& service, Request& request);

}  // namespace tavrix::sandbox
