// The pages a person sees in a browser, in Polish: what has arrived, and each invoice to read.
#pragma once

#include "apps/sandbox/control.h"

namespace tavrix::sandbox {

/// Answers `/`, `/sesja/{reference}` and `/faktura/{reference}`; 404 for anything else.
Answer show_page(ControlRoom& room, Request& request);

}  // namespace tavrix::sandbox
