#pragma once

#include <functional>

#include "ksef/client.h"
#include "ksef/token.h"
#include "ports/database.h"

namespace tavrix::ksef {

/// Writes the outcome of finished packages into the host's sales invoices, each invoice by its own
/// status. An invoice is found by its hash, then by its name in the package that was noted when it
/// was sent, then by its number. What was noted of a package that failed as a whole is marked too.
///
/// Asks for the sessions that changed since the last run, the oldest change first, and for those
/// that were left out then: a run that the service ends early is where the next one begins. A
/// `Retry-After` of up to a minute is waited out; `log_in` is called when the token has run out,
/// and gives the empty text or that of the failure. Returns the empty text when nothing was left
/// out, otherwise that of the last failure: a session that is refused or oddly answered does not
/// keep the others from theirs, nor an invoice that cannot be written. Throws base::AutomationError
/// when the list of sessions does not arrive or is none.
base::Text reconcile_by_name(KsefPorts& ports, Client& client, ports::Database& database,
                             const TokenCheck& token, const std::function<base::Text()>& log_in);

}  // namespace tavrix::ksef
