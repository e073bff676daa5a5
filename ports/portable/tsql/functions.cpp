#include "ports/portable/tsql/functions.h"

#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <ctime>

#include "base/text.h"

namespace tavrix::ports::tsql {
namespace {

using base::Text;
using base::TextView;

// The argument as UTF-16, valid until the function returns.
TextView text_argument(sqlite3_value* value) {
    const auto* text = static_cast<const char16_t*>(sqlite3_value_text16(value));
    return {text, text == nullptr ? 0 : static_cast<std::size_t>(sqlite3_value_bytes16(value)) / 2};
}

void return_text(sqlite3_context* context, TextView text) {
    sqlite3_result_text16(context, text.data() == nullptr ? u"" : text.data(),
                          static_cast<int>(text.size() * 2), SQLITE_TRANSIENT);
}

bool any_null(int count, sqlite3_value** values) {
    return std::any_of(values, values + count, [](sqlite3_value* value) {
        return sqlite3_value_type(value) == SQLITE_NULL;
    });
}

void charindex(sqlite3_context* context, int count, sqlite3_value** values) {
    const TextView needle = text_argument(values[0]);
    const TextView text = text_argument(values[1]);
    const auto start = count > 2 ? std::max<sqlite3_int64>(sqlite3_value_int64(values[2]), 1) : 1;
    // An empty needle is nowhere, unlike in most languages.
    const std::size_t found =
        needle.empty() ? TextView::npos
                       : base::find_case_blind(text, needle, static_cast<std::size_t>(start - 1));
    sqlite3_result_int64(context,
                         found == TextView::npos ? 0 : static_cast<sqlite3_int64>(found) + 1);
}

TextView slice(TextView text, sqlite3_int64 start, sqlite3_int64 length) {
    // A start before 1 uses up length before the first character.
    const auto size = static_cast<sqlite3_int64>(text.size());
    const sqlite3_int64 end =
        std::clamp<sqlite3_int64>(length > size - start ? size : start - 1 + length, 0, size);
    const sqlite3_int64 begin = std::clamp<sqlite3_int64>(start - 1, 0, size);
    return end <= begin ? TextView{}
                        : text.substr(static_cast<std::size_t>(begin),
                                      static_cast<std::size_t>(end - begin));
}

void substring(sqlite3_context* context, int, sqlite3_value** values) {
    const sqlite3_int64 length = sqlite3_value_int64(values[2]);
    if (length < 0) {
        sqlite3_result_error(context, "Invalid length parameter passed to the SUBSTRING function.",
                             -1);
        return;
    }
    return_text(context, slice(text_argument(values[0]), sqlite3_value_int64(values[1]), length));
}

void left(sqlite3_context* context, int, sqlite3_value** values) {
    return_text(context, slice(text_argument(values[0]), 1,
                               std::max<sqlite3_int64>(sqlite3_value_int64(values[1]), 0)));
}

void right(sqlite3_context* context, int, sqlite3_value** values) {
    const TextView text = text_argument(values[0]);
    const auto size = static_cast<sqlite3_int64>(text.size());
    const sqlite3_int64 length = std::clamp<sqlite3_int64>(sqlite3_value_int64(values[1]), 0, size);
    return_text(context, text.substr(static_cast<std::size_t>(size - length)));
}

void len(sqlite3_context* context, int, sqlite3_value** values) {
    const TextView text = text_argument(values[0]);
    // Trailing blanks do not count.
    const std::size_t last = text.find_last_not_of(u' ');
    sqlite3_result_int64(context,
                         last == TextView::npos ? 0 : static_cast<sqlite3_int64>(last) + 1);
}

void replace(sqlite3_context* context, int, sqlite3_value** values) {
    const TextView text = text_argument(values[0]);
    const TextView from = text_argument(values[1]);
    const TextView to = text_argument(values[2]);
    if (from.empty()) return return_text(context, text);
    Text out;
    std::size_t start = 0;
    for (;;) {
        const std::size_t found = base::find_case_blind(text, from, start);
        out += text.substr(start, found == TextView::npos ? found : found - start);
        if (found == TextView::npos) return return_text(context, out);
        out += to;
        start = found + from.size();
    }
}

void lower(sqlite3_context* context, int, sqlite3_value** values) {
    Text text(text_argument(values[0]));
    std::ranges::transform(text, text.begin(), base::lower);
    return_text(context, text);
}

void upper(sqlite3_context* context, int, sqlite3_value** values) {
    Text text(text_argument(values[0]));
    std::ranges::transform(text, text.begin(), base::upper);
    return_text(context, text);
}

// The one reading of the time that no port provides: the database server's own clock in a real
// installation.
void getdate(sqlite3_context* context, int, sqlite3_value**) {
    const std::time_t now = std::time(nullptr);
    char text[32];
    const std::size_t size =
        std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", std::localtime(&now));
    sqlite3_result_text(context, text, static_cast<int>(size), SQLITE_TRANSIENT);
}

using Implementation = void (*)(sqlite3_context*, int, sqlite3_value**);

// A null argument makes the result null, and what memory denies becomes SQLite's error: no
// exception may pass through C frames.
template <Implementation function>
void guarded(sqlite3_context* context, int count, sqlite3_value** values) noexcept {
    if (any_null(count, values)) return sqlite3_result_null(context);
    try {
        function(context, count, values);
    } catch (...) {
        sqlite3_result_error_nomem(context);
    }
}

struct Registration {
    const char* name;
    int arguments;
    Implementation function;
};

constexpr std::array registrations = {
    Registration{"tsql_charindex", 2, guarded<charindex>},
    Registration{"tsql_charindex", 3, guarded<charindex>},
    Registration{"tsql_getdate", 0, guarded<getdate>},
    Registration{"tsql_left", 2, guarded<left>},
    Registration{"tsql_len", 1, guarded<len>},
    Registration{"tsql_lower", 1, guarded<lower>},
    Registration{"tsql_replace", 3, guarded<replace>},
    Registration{"tsql_right", 2, guarded<right>},
    Registration{"tsql_substring", 3, guarded<substring>},
    Registration{"tsql_upper", 1, guarded<upper>},
};

}  // namespace

void register_functions(sqlite3* connection) {
    for (const Registration& entry : registrations) {
        sqlite3_create_function(connection, entry.name, entry.arguments, SQLITE_UTF16, nullptr,
                                entry.function, nullptr, nullptr);
    }
}

}  // namespace tavrix::ports::tsql
