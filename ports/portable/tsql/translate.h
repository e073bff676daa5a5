#pragma once

#include <string>
#include <string_view>

namespace tavrix::ports::tsql {

/// A statement for SQLite.
struct Translation {
    std::string sql;
    /// The table whose rows a select's rows are, or "" when they are of several tables, grouped,
    /// distinct or computed. When it is not empty, the first result column is the row's rowid,
    /// which the statement did not ask for.
    std::string row_table;
    bool is_query = false;
    /// How many "?" stand for values.
    std::size_t parameters = 0;
};

/// Translates one SQL Server statement (select, insert, update, delete) as hosts of this library
/// write them: `top n` at any depth, `charindex`, `substring`, `replace`, `isnull`, `len`, `left`,
/// `right`, `getdate`, texts joined with +, names in brackets, the owner `dbo`, `with (nolock)`,
/// `?`. Throws base::AutomationError naming the byte offset for everything else, rather than run
/// something that means another thing in SQLite.
Translation translate(std::string_view sql);

}  // namespace tavrix::ports::tsql
