// Searching invoices by their metadata.
#pragma once

#include "apps/sandbox/service.h"

namespace tavrix::sandbox {

Answer query_metadata(Service& service, Request& request);

}  // namespace tavrix::sandbox
