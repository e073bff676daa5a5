#include "dialogs/connection_text.h"

#include <algorithm>
#include <utility>

namespace tavrix::dialogs {
namespace {

using base::SecretText;
using base::TextView;

constexpr TextView database_keys[] = {u"Initial Catalog", u"Database"};
constexpr TextView server_keys[] = {u"Data Source", u"Server", u"Address", u"Addr",
                                    u"Network Address"};
constexpr TextView driver_keys[] = {u"Driver", u"DSN", u"FileDSN"};
constexpr TextView own_account = u"Provider=SQLOLEDB;Integrated Security=SSPI";
constexpr TextView hidden_password = u"***";

bool is_key_of(TextView key, std::span<const TextView> keys) {
    return std::ranges::any_of(keys,
                               [&](TextView one) { return base::equal_case_blind(key, one); });
}

bool is_connection_blank(char16_t c) {
    return c == u' ' || c == u'\t' || c == u'\r' || c == u'\n';
}

TextView trim_blanks(TextView text) {
    while (!text.empty() && is_connection_blank(text.front())) text.remove_prefix(1);
    while (!text.empty() && is_connection_blank(text.back())) text.remove_suffix(1);
    return text;
}

struct ConnectionPiece {
    TextView key;
    TextView value;  // as it is written, with its quotes
};

char16_t closing_mark(TextView value) {
    if (value.empty()) return 0;
    if (value.front() == u'{') return u'}';
    return value.front() == u'"' || value.front() == u'\'' ? value.front() : char16_t{0};
}

// Behind the closing mark; 0 for a value without quotes, or whose quotes never end.
std::size_t quoted_length(TextView value) {
    const char16_t mark = closing_mark(value);
    if (mark == 0) return 0;
    for (std::size_t i = 1; i < value.size(); ++i) {
        if (value[i] != mark) continue;
        if (i + 1 == value.size() || value[i + 1] != mark) return i + 1;
        ++i;
    }
    return 0;
}

std::vector<ConnectionPiece> connection_pieces(TextView text) {
    std::vector<ConnectionPiece> pieces;
    while (!text.empty()) {
        const std::size_t equals = text.find(u'=');
        const std::size_t semicolon = text.find(u';');
        if (semicolon < equals) {
            text.remove_prefix(semicolon + 1);
            continue;
        }
        if (equals == TextView::npos) break;
        const TextView key = trim_blanks(text.substr(0, equals));
        text.remove_prefix(equals + 1);
        while (!text.empty() && is_connection_blank(text.front())) text.remove_prefix(1);
        const std::size_t end = std::min(text.find(u';', quoted_length(text)), text.size());
        pieces.push_back({key, trim_blanks(text.substr(0, end))});
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return pieces;
}

SecretText unquoted_value(TextView value) {
    if (quoted_length(value) != value.size()) return SecretText(value);
    const char16_t mark = closing_mark(value);
    SecretText plain;
    for (std::size_t i = 1; i + 1 < value.size(); ++i) {
        plain += value[i];
        if (value[i] == mark) ++i;
    }
    return plain;
}

SecretText quoted_value(TextView value, bool for_driver) {
    if (value.find_first_of(u";'\"{}=") == TextView::npos && trim_blanks(value) == value) {
        return SecretText(value);
    }
    const char16_t mark = for_driver ? u'}' : u'"';
    SecretText text;
    text += for_driver ? u'{' : mark;
    for (const char16_t c : value) {
        text += c;
        if (c == mark) text += c;
    }
    text += mark;
    return text;
}

bool is_password(TextView key) {
    constexpr TextView ending = u"password";
    return base::equal_case_blind(key, u"pwd") ||
           (key.size() >= ending.size() &&
            base::equal_case_blind(key.substr(key.size() - ending.size()), ending));
}

bool has_key(TextView connection, std::span<const TextView> keys) {
    return std::ranges::any_of(connection_pieces(connection), [&](const ConnectionPiece& piece) {
        return is_key_of(piece.key, keys);
    });
}

// `value` for the value that one of the keys has now, or a piece more.
SecretText with_value(TextView connection, std::span<const TextView> keys, TextView new_key,
                      TextView value) {
    const SecretText written = quoted_value(value, has_key(connection, driver_keys));
    for (const ConnectionPiece& piece : connection_pieces(connection)) {
        if (!is_key_of(piece.key, keys)) continue;
        const auto begin = static_cast<std::size_t>(piece.value.data() - connection.data());
        SecretText text(connection.substr(0, begin));
        text += written.view();
        text += connection.substr(begin + piece.value.size());
        return text;
    }
    SecretText text(connection);
    const TextView filled = trim_blanks(connection);
    if (!filled.empty() && filled.back() != u';') text += u';';
    text += new_key;
    text += u'=';
    text += written.view();
    return text;
}

SecretText connection_to(TextView name, TextView connection, TextView server) {
    const TextView whole = trim_blanks(connection).empty() ? own_account : connection;
    const bool for_driver = has_key(whole, driver_keys);
    SecretText text = with_value(whole, database_keys,
                                 for_driver ? TextView(u"Database") : database_keys[0], name);
    // A data source's name stands for its server too.
    const bool knows_server =
        has_key(whole, server_keys) || (for_driver && !has_key(whole, {driver_keys, 1}));
    if (knows_server || server.empty()) return text;
    return with_value(text.view(), server_keys, for_driver ? TextView(u"Server") : server_keys[0],
                      server);
}

base::Text shown_value(TextView connection, std::span<const TextView> keys) {
    const std::optional<SecretText> value = value_of_key(connection, keys);
    return value ? base::Text(value->view()) : base::Text();
}

ListedDatabase listed_database(TextView entry, TextView connection, TextView server) {
    const bool is_whole = entry.find(u'=') != TextView::npos;
    SecretText text = is_whole ? SecretText(entry) : connection_to(entry, connection, server);
    base::Text its_server = shown_value(text.view(), server_keys);
    if (its_server.empty() && !is_whole) its_server = server;
    return {is_whole ? shown_value(entry, database_keys) : base::Text(entry), std::move(its_server),
            std::move(text)};
}

}  // namespace

std::optional<SecretText> value_of_key(TextView connection, std::span<const TextView> keys) {
    for (const ConnectionPiece& piece : connection_pieces(connection)) {
        if (is_key_of(piece.key, keys)) return unquoted_value(piece.value);
    }
    return std::nullopt;
}

base::Text without_passwords(TextView connection) {
    base::Text text;
    const char16_t* copied = connection.data();
    for (const ConnectionPiece& piece : connection_pieces(connection)) {
        if (!is_password(piece.key)) continue;
        text.append(copied, piece.value.data()).append(hidden_password);
        copied = piece.value.data() + piece.value.size();
    }
    return text.append(copied, connection.data() + connection.size());
}

base::Text words_without_passwords(base::Text words, TextView connection) {
    for (const ConnectionPiece& piece : connection_pieces(connection)) {
        if (!is_password(piece.key)) continue;
        const SecretText password = unquoted_value(piece.value);
        if (!password.empty()) words = base::replace_all(words, password.view(), hidden_password);
    }
    return words;
}

std::vector<ListedDatabase> list_databases(std::int32_t count, std::span<const SecretText> entries,
                                           TextView connection, TextView server) {
    std::vector<ListedDatabase> databases;
    for (const SecretText& entry : entries) {
        if (std::cmp_greater_equal(databases.size(), std::max(count, 0))) break;
        // Hosts that count from 1 leave the first element of their array blank.
        const TextView filled = trim_blanks(entry.view());
        if (!filled.empty())
            databases.push_back(listed_database(filled, connection, trim_blanks(server)));
    }
    return databases;
}

SplitConnection split_connection(TextView connection) {
    constexpr std::size_t most = 255;
    if (connection.size() <= most) return {SecretText(connection), {}};
    const auto is_bad_cut = [&](std::size_t at) {
        const char16_t before = connection[at - 1];
        return is_connection_blank(before) || is_connection_blank(connection[at]) ||
               (before >= 0xD800 && before < 0xDC00);
    };
    std::size_t cut = most;
    while (cut > 0 && is_bad_cut(cut)) --cut;
    // Nothing but blanks.
    if (cut == 0) cut = most;
    return {SecretText(connection.substr(0, cut)), SecretText(connection.substr(cut))};
}

}  // namespace tavrix::dialogs
