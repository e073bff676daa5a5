// The readable view of one FA invoice.
#pragma once

#include <string>

namespace tavrix::sandbox {

/// HTML of the invoice's seller, buyer, lines, tax and totals; a note instead when the document
/// cannot be read. Every text of the document is escaped.
std::string render_invoice(const std::string& xml);

}  // namespace tavrix::sandbox
