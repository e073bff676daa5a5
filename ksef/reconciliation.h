#pragma once

#include "ksef/client.h"
#include "ports/database.h"

namespace tavrix::ksef {

/// The text of a failure that no step told of.
inline constexpr base::TextView unknown_reconciliation_failure = u"Nieznany błąd pobierania upo";

/// Writes the outcome of the company's finished packages into the host's sales invoices, for an
/// authenticated client: first of the accepted packages, then of the failed, then of the cancelled
/// ones. Sessions and invoices are read by the position of their members.
///
/// Asks for a list of sessions until it is answered with 200. Throws base::AutomationError for an
/// answer that does not arrive or is no list, and for what the database refuses; what was written
/// before stays.
void reconcile_by_position(KsefPorts& ports, Client& client, ports::Database& database);

}  // namespace tavrix::ksef
