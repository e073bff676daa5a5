// The readable view of one FA invoice.
#pragma once

#include <string>

namespace tavrix::sandbox {

/// HTML of the invoice's seller, buyer, lines, tax and totals; a note instead when the document
/// cannot be read. Every text of the document is escaped.
std::string render_invoice(const std::string& xml);

/// One row of a table of facts, nothing without a value.
std::string fact(const std::string& label, const std::string& value);

/// An amount in Polish writing, with two digits after the comma.
std::string money_text(double amount);

}  // namespace tavrix::sandbox
