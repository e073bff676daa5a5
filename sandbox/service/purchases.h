// Invoices from the other side: what sellers send to a company, without anybody playing a seller.
#pragma once

#include "sandbox/service/service.h"

namespace tavrix::sandbox {

struct Purchases {
    /// A document of the seller's; empty for made-up ones, to which the rest applies.
    std::string xml;
    std::string seller;
    std::string buyer;
    std::string buyer_unit;
    int count = 1;
};

/// Puts accepted invoices into the repository, in a finished session of the seller's, and returns
/// their KSeF numbers. Documents are judged as any other; throws std::invalid_argument for one that
/// is not accepted, which is then a rejected invoice of that session.
std::vector<std::string> add_purchases(Service& service, const Purchases& purchases);

}  // namespace tavrix::sandbox
