#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "base/secret.h"

namespace tavrix::dialogs {

// Connection texts as OLE DB and ODBC write them: "key=value" pieces between semicolons, keys in
// any letter case, a value with a semicolon in it in quotes, apostrophes or braces, the closing
// mark doubled where the value holds it.

/// The value of the first piece with one of the keys, without its quotes. Nothing when there is no
/// such piece.
std::optional<base::SecretText> value_of_key(base::TextView connection,
                                             std::span<const base::TextView> keys);

/// The text with "***" for the value of every key that ends like a password's ("Database Password",
/// "NewPwd", "Client Secret", "Access Token"), also in texts that are the values of other keys.
base::Text without_passwords(base::TextView connection);
/// What somebody else said, with "***" for every password of the connection that it repeats.
base::Text words_without_passwords(base::Text words, base::TextView connection);

/// One database that the user can choose.
struct ListedDatabase {
    base::Text name;    ///< "" where the text names none
    base::Text server;  ///< "" where nothing names one
    base::SecretText connection;
};

/// The first `count` entries that are not blank, fewer where there are fewer. An entry with "=" is
/// a whole connection text. Any other one is the name of a database: its text is `connection` with
/// that name for its "Initial Catalog" (or "Database"), and with `server` where it names no server.
/// Where `connection` is blank, the user's own Windows account logs in.
std::vector<ListedDatabase> list_databases(std::int32_t count,
                                           std::span<const base::SecretText> entries,
                                           base::TextView connection, base::TextView server);

/// A connection text as the host takes it: two texts that make the whole one when they are joined.
struct SplitConnection {
    base::SecretText first;   ///< at most 255 UTF-16 units
    base::SecretText second;  ///< "" when all of it fitted
};
/// Never cuts between surrogates, nor beside a blank, which a host's Trim would take away.
SplitConnection split_connection(base::TextView connection);

}  // namespace tavrix::dialogs
