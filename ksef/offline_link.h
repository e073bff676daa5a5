#pragma once

#include "ksef/client.h"
#include "ports/database.h"

namespace tavrix::ksef {

/// A document that was issued while KSeF could not be reached, and whose certificate vouches for
/// it.
struct OfflineDocument {
    const base::Text& certificate_serial;
    /// "TABLE,TOKEN,SETTINGS NUMBER", as the host passes it.
    const base::SecretText& table_argument;
    std::int32_t id;
    const base::Text& tax_number;
};

/// The piece of a table argument; nothing when it has no so many.
std::optional<base::TextView> piece_of(const base::SecretText& table_argument, std::size_t index);

/// Makes the certificate link of an invoice, signs it with the key from the user's settings, stores
/// it in the document's row and returns it; or returns the text of what failed, and the row is as
/// it was. The empty text: the document has no hash to be linked by, or something failed outside a
/// step's own checks. Raises nothing.
base::Text make_certificate_link(KsefPorts& ports, Client& client, ports::Database& database,
                                 const OfflineDocument& document);

}  // namespace tavrix::ksef
