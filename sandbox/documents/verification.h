// Judging one invoice.
#pragma once

#include "sandbox/documents/schemas.h"
#include "sandbox/store/model.h"

namespace tavrix::sandbox {

// Source: "Weryfikacja faktury", sizes of files: that of an invoice with attachments.
inline constexpr std::int64_t largest_invoice_file = 3'000'000;

/// What an invoice is judged by, beside itself and its session.
struct Criteria {
    /// What has been accepted so far.
    const State& state;
    /// Null: well-formedness and the main fields are all there is to check.
    SchemaFolder* schemas;
    bool refuse_attachments;
};

/// Checks an invoice, after decrypting one that came alone, in the order the service does, from the
/// file to its meaning. Fills in what was learnt on the way (document, summary, mode) and returns
/// the status: 200, or why not.
Status verify_invoice(const Criteria& criteria, const Session& session, Invoice& invoice);

}  // namespace tavrix::sandbox
