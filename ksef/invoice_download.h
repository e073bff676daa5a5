#pragma once

#include "ksef/client.h"
#include "ports/database.h"

namespace tavrix::ksef {

/// The text of a failure that no step told of, once the authentication is done.
inline constexpr base::TextView unknown_after_authentication =
    u"Nieznany błąd po prawidłowej inicializacji";

/// Records the invoices of the last sixty days that the host has not seen, for an authenticated
/// client, and fetches what is missing of all that are recorded: as seller ("Subject1"), buyer
/// ("Subject2" or ""), third party ("Subject3") or "SubjectAuthorized". `product_group` goes into
/// each new row.
///
/// Returns what fetch_invoices returns, or the text of what failed before. An invoice that cannot
/// be recorded does not keep the others from it; the text then is that of the unknown failure.
/// Raises nothing.
base::Text download_invoices(KsefPorts& ports, Client& client, ports::Database& database,
                             std::int32_t product_group, const base::Text& subject_type);

}  // namespace tavrix::ksef
