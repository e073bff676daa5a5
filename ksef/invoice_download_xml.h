#pragma once

#include "ksef/client.h"
#include "ports/database.h"

namespace tavrix::ksef {

/// Fetches the document of every recorded invoice that has none yet, with the tokens and the
/// address that the client has, and enters who has to approve it.
///
/// Returns "kod bładu:" and the last HTTP status when the service refused nothing, else its last
/// refusal; `unknown` when an invoice could not be written, which does not keep the others from it.
/// Raises nothing.
base::Text fetch_invoices(KsefPorts& ports, Client& client, ports::Database& database,
                          base::TextView unknown);

}  // namespace tavrix::ksef
