// What the service does behind the scenes: verifying invoices and finishing sessions.
#pragma once

#include "sandbox/service/service.h"
#include "sandbox/store/statuses.h"

namespace tavrix::sandbox {

/// Carries out everything that is due by now. Run before each request, so that an answer never
/// depends on who asked last.
void settle(Service& service);

/// The part of it that is about invoices.
void settle_invoices(Service& service);

/// What an invoice's or a session's status is now; asking counts where the pace is counted in
/// polls.
Status observe(Service& service, Invoice& invoice);
Status observe(Service& service, Session& session);

/// Judges an invoice and notes what comes of it.
void finish_invoice(Service& service, Session& session, Invoice& invoice, Instant when);

/// What due verdicts of a step have ordered instead of the status found.
void apply_verdicts(Service& service, std::string_view step, StatusOf what, Status& status);

/// Cancels a batch session whose parts did not come in time.
void cancel_upload(Service& service, Session& session, Instant when);

/// Closes a session: no more invoices, confirmations follow.
void close_session(Service& service, Session& session, Instant when);

}  // namespace tavrix::sandbox
