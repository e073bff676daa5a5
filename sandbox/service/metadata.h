// Searching invoices by their metadata.
#pragma once

#include "sandbox/service/service.h"

namespace tavrix::sandbox {

Answer query_metadata(Service& service, Request& request);

}  // namespace tavrix::sandbox
