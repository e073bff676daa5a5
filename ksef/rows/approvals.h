#pragma once

#include "ports/database.h"

namespace tavrix::ksef {

/// What the host's approval rules ask of an invoice; each empty when the invoice has none.
struct ApprovalQuestion {
    base::Text contractor;  ///< konh_id
    base::Text internal_identifier;
    base::Text other_role;
    base::Text third_party;
    base::Text number;
};

/// Who has to approve an invoice.
class Approvals {
  public:
    explicit Approvals(ports::Database& database) : database_(database) {}

    /// Enters the users whom the first rule that fits names for the invoice `id`, and appends them
    /// to its list. Whoever is entered already stays so.
    /// One who cannot be entered does not keep the others out: it throws base::AutomationError at
    /// the end.
    void enter(const base::Text& id, const ApprovalQuestion& question);

  private:
    base::Text users(const ApprovalQuestion& question);
    void enter_user(const base::Text& id, std::int64_t user);

    ports::Database& database_;
};

}  // namespace tavrix::ksef
