#pragma once

#include <memory>

#include "ports/portable/sqlite_database.h"

namespace tavrix::test {

/// A host's database in memory with the demonstration's tables; document 1001 of dok_fak is dated
/// `issue_date`.
std::shared_ptr<ports::SqliteConnection> make_host_database(const std::string& issue_date);

/// The demonstration's tables, as SQLite takes them.
std::string demonstration_schema();
/// The demonstration's invoice, FA(3), as a host reads it: one character for each byte.
base::Text demonstration_invoice();
/// Its bytes.
std::string demonstration_invoice_file();

}  // namespace tavrix::test
