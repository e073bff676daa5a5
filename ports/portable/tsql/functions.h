#pragma once

struct sqlite3;

namespace tavrix::ports::tsql {

/// Gives a connection the functions that the translation names (tsql_charindex and its like), with
/// SQL Server's meaning: positions count from 1 in UTF-16 units, texts compare without regard to
/// letter case.
void register_functions(sqlite3* connection);

}  // namespace tavrix::ports::tsql
