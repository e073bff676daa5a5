#pragma once

#include "ksef/rows/approvals.h"
#include "ports/database.h"

namespace tavrix::ksef {

/// A walk over the recorded invoices whose document was not fetched yet.
class MissingInvoices {
  public:
    explicit MissingInvoices(ports::Database& database);

    bool at_end() { return rows_->at_end(); }
    void move_next() { rows_->move_next(); }

    base::Text ksef_number() { return text(u"ksefNumber"); }
    /// countt, the row's key.
    base::Text id() { return text(u"countt"); }
    /// The document's hash as the list of invoices told it.
    base::Text hash();
    /// Writes the document, the buyer's internal identifier as far as its column takes it, and what
    /// was found out about it; returns what the approval rules ask. The row is written by its key
    /// alone: a walk's own row could not be told from others where the table has none. A failure
    /// that is reported although the document stands there is none.
    ApprovalQuestion store(const base::Text& xml, base::TextView identifier, std::int64_t verdict);

  private:
    base::Text text(base::TextView column) { return ports::text_of(rows_->field(column)); }

    std::unique_ptr<ports::Recordset> own_row(base::TextView columns);

    ports::Database& database_;
    std::unique_ptr<ports::Recordset> rows_;
};

}  // namespace tavrix::ksef
