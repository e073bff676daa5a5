// Invoices for those who need some and do not care which.
#pragma once

#include <string>

namespace tavrix::sandbox {

struct MadeUpInvoice {
    std::string seller;
    std::string buyer;
    /// Of the buyer's unit, as a further party; empty for none.
    std::string buyer_unit;
    std::string number;
    /// `2026-11-21`
    std::string issue_date;
    int net_zloty = 100;
};

/// An FA (3) document that agrees with the published schema.
std::string make_up(const MadeUpInvoice& invoice);

}  // namespace tavrix::sandbox
