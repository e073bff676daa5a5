// The readable view of one FA invoice.
#pragma once

#include <string>

#include "sandbox/store/model.h"

namespace tavrix::sandbox {

/// HTML of the invoice's seller, buyer, lines, tax, totals, payment and attachment; a note instead
/// when the document cannot be read.
std::string render_invoice(const std::string& xml);

/// What a list says of an invoice, also of one that was refused before anybody looked into it.
struct InvoiceHeading {
    /// A remark in brackets where the document has none.
    std::string number;
    std::string buyer;
    /// With its currency.
    std::string amount;
    /// Name of the seller and the tax numbers of both, to be searched; empty where the summary has
    /// them.
    std::string parties;
    bool attachment = false;
};
InvoiceHeading heading_of(const Invoice& invoice);

}  // namespace tavrix::sandbox
