#pragma once

#include <memory>
#include <string>

#include "ports/database.h"

namespace tavrix::cli {

/// What --db names: a SQLite file, or an ADO connection by its text, "Provider=...".
std::unique_ptr<ports::Database> open_database(const std::string& name);

}  // namespace tavrix::cli
