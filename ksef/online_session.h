#pragma once

#include "ksef/client.h"
#include "ksef/rows/document_row.h"

namespace tavrix::ksef {

/// The form that an invoice follows, for example "FA (3)", "1-0E", "FA".
struct FormCode {
    const base::Text& system_code;
    const base::Text& schema_version;
    const base::Text& value;
};

/// Sends one invoice in an online session of an authenticated client, records the outcome in the
/// document's row and stores the UPO.
///
/// Returns the empty text once the UPO is stored, "Faktura o numerze KSeF: " and the number when
/// the invoice was accepted but the UPO could not be had, the same without a number when the
/// service named none (the row keeps the one it has), or the text of what failed. Raises nothing.
base::Text send_in_online_session(KsefPorts& ports, Client& client, DocumentRow row,
                                  base::Bytes invoice, const FormCode& form);

}  // namespace tavrix::ksef
