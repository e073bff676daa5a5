// Judging one invoice.
#pragma once

#include "apps/sandbox/service.h"

namespace tavrix::sandbox {

/// Decrypts and checks an invoice in the order the service does, from the file to its meaning.
/// Fills in what was learnt on the way (document, summary, mode) and returns the status: 200, or
/// why not.
Status verify_invoice(Service& service, const Session& session, Invoice& invoice);

}  // namespace tavrix::sandbox
