#include "cli/open_database.h"

#include <algorithm>

#include "base/text.h"
#include "cli/system_ports.h"
#include "ports/portable/sqlite_database.h"

namespace tavrix::cli {

std::unique_ptr<ports::Database> open_database(const std::string& name) {
    // The words that a connection text may begin with.
    constexpr base::TextView beginnings[] = {u"provider=", u"driver=", u"dsn=", u"file name="};
    const base::Text text = base::from_utf8(name);
    if (std::ranges::any_of(beginnings, [&](base::TextView beginning) {
            return base::equal_case_blind(base::TextView(text).substr(0, beginning.size()),
                                          beginning);
        })) {
        return open_ado(name);
    }
    return std::make_unique<ports::SqliteDatabase>(ports::SqliteConnection::open(name));
}

}  // namespace tavrix::cli
