// Official confirmations of receipt (UPO), version 4-3.
#pragma once

#include <string>
#include <vector>

#include "sandbox/store/model.h"

namespace tavrix::sandbox {

/// The confirmation of one accepted invoice.
std::string make_invoice_upo(const Session& session, const Authentication& authentication,
                             const Invoice& invoice);

/// The confirmation of a whole session: its accepted invoices, in order, on one page.
std::string make_session_upo(const Session& session, const Authentication& authentication,
                             const std::vector<const Invoice*>& accepted);

}  // namespace tavrix::sandbox
