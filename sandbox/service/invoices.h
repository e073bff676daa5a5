// Invoices of a session: sending, their status and confirmations, and fetching by KSeF number.
#pragma once

#include "sandbox/service/service.h"

namespace tavrix::sandbox {

Answer send_invoice(Service& service, Request& request);
Answer list_session_invoices(Service& service, Request& request);
Answer list_failed_invoices(Service& service, Request& request);
Answer invoice_status(Service& service, Request& request);
Answer invoice_upo(Service& service, Request& request);
Answer invoice_upo_by_ksef_number(Service& service, Request& request);
Answer session_upo(Service& service, Request& request);
Answer invoice_by_ksef_number(Service& service, Request& request);

}  // namespace tavrix::sandbox
