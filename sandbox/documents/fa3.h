// What an FA invoice says about itself.
#pragma once

#include <string>
#include <vector>

#include "sandbox/basics/xml.h"
#include "sandbox/store/model.h"

namespace tavrix::sandbox {

struct SummaryResult {
    InvoiceSummary summary;
    /// What a summary needs and the document lacks or has in a form that no answer could carry;
    /// empty when it is complete.
    std::vector<std::string> problems;
};

/// Reads the root element `Faktura` of FA (2) or FA (3). Names of elements: the FA (3) schema,
/// 1-0E.
SummaryResult summarize_invoice(const Element& invoice);

/// The contract's name of an invoice's kind (`RodzajFaktury`); empty for one that FA does not have.
std::string invoice_type(const std::string& kind);

/// `kodSystemowy` of the heading, for example `FA (3)`.
std::string form_system_code(const Element& invoice);

}  // namespace tavrix::sandbox
