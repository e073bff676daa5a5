// The status codes of operations, sessions and invoices. Source: the contract's tables under
// AuthenticationOperationStatusResponse, SessionStatusResponse and SessionInvoiceStatusResponse.
#pragma once

#include "sandbox/store/model.h"

namespace tavrix::sandbox {

enum class StatusOf { authentication, online_session, batch_session, invoice };

/// A status with the published description of its code, and, when no details are given, the one
/// that is published beside it; a code of no table gets "Nieznany błąd (code)".
Status make_status(StatusOf what, int code, std::vector<std::string> details = {});

}  // namespace tavrix::sandbox
