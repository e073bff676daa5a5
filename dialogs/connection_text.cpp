#include "dialogs/connection_text.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace tavrix::dialogs {
namespace {

using base::SecretText;
using base::TextView;

constexpr TextView database_keys[] = {u"Initial Catalog", u"Database"};
constexpr TextView server_keys[] = {u"Data Source", u"Server", u"Address", u"Addr",
                                    u"Network Address"};
constexpr TextView driver_keys[] = {u"Driver", u"DSN", u"FileDSN"};
constexpr TextView nested_keys[] = {u"Extended Properties"};
constexpr TextView provider_keys[] = {u"Provider"};
constexpr TextView file_keys[] = {u"File Name"};
constexpr TextView own_account = u"Provider=SQLOLEDB;Integrated Security=SSPI";
constexpr TextView hidden_password = u"***";
// Texts inside texts deeper than anybody writes them are hidden as a whole.
constexpr int deepest_nesting = 4;

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

bool is_password(TextView key) {
    constexpr TextView endings[] = {u"password", u"pwd", u"secret", u"token"};
    // Digits, blanks of any width, a quote.
    const auto is_letter = [](char16_t c) { return (c | 0x20) >= u'a' && (c | 0x20) <= u'z'; };
    while (!key.empty() && !is_letter(key.back())) key.remove_suffix(1);
    return std::ranges::any_of(endings, [&](TextView ending) {
        return key.size() >= ending.size() &&
               base::equal_case_blind(key.substr(key.size() - ending.size()), ending);
    });
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
        const std::size_t quoted = quoted_length(text);
        // Where a password's quotes never end, nobody knows how much of the rest belongs to it.
        const bool takes_the_rest = quoted == 0 && closing_mark(text) != 0 && is_password(key);
        const std::size_t end =
            takes_the_rest ? text.size() : std::min(text.find(u';', quoted), text.size());
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

SecretText in_quotes(TextView value, char16_t opening, char16_t closing) {
    SecretText text;
    text += opening;
    for (const char16_t c : value) {
        text += c;
        if (c == closing) text += c;
    }
    text += closing;
    return text;
}

SecretText quoted_value(TextView value, bool for_driver) {
    if (value.find_first_of(u";'\"{}=") == TextView::npos && trim_blanks(value) == value) {
        return SecretText(value);
    }
    return in_quotes(value, for_driver ? u'{' : u'"', for_driver ? u'}' : u'"');
}

bool has_key(TextView connection, std::span<const TextView> keys) {
    return std::ranges::any_of(connection_pieces(connection), [&](const ConnectionPiece& piece) {
        return is_key_of(piece.key, keys);
    });
}

// `value` for the value that the first of the keys has now, the others taken out; or a piece more.
SecretText with_value(TextView connection, std::span<const TextView> keys, TextView new_key,
                      TextView value) {
    const SecretText written = quoted_value(value, has_key(connection, driver_keys));
    SecretText text;
    std::size_t copied = 0;
    bool is_written = false;
    for (const ConnectionPiece& piece : connection_pieces(connection)) {
        if (!is_key_of(piece.key, keys)) continue;
        const auto value_begin = static_cast<std::size_t>(piece.value.data() - connection.data());
        const std::size_t value_end = value_begin + piece.value.size();
        if (!is_written) {
            text += connection.substr(copied, value_begin - copied);
            text += written.view();
            copied = value_end;
            is_written = true;
        } else {
            // Which of several synonyms counts, providers do not agree on.
            const auto key_begin = static_cast<std::size_t>(piece.key.data() - connection.data());
            text += connection.substr(copied, key_begin - copied);
            copied = std::min(connection.find(u';', value_end), connection.size() - 1) + 1;
        }
    }
    text += connection.substr(copied);
    if (is_written) return text;
    const TextView filled = trim_blanks(connection);
    if (!filled.empty() && filled.back() != u';') text += u';';
    text += new_key;
    text += u'=';
    text += written.view();
    return text;
}

// Also by a name that stands for it: a data source's, a file's, or the driver's own text.
bool names_its_server(TextView connection, bool for_driver) {
    const auto provider = value_of_key(connection, provider_keys);
    return has_key(connection, server_keys) || has_key(connection, file_keys) ||
           (for_driver && !has_key(connection, {driver_keys, 1})) ||
           // To this one a data source is a name of ODBC's, not a server.
           (provider && base::equal_case_blind(provider->view().substr(0, 7), u"MSDASQL"));
}

SecretText connection_to(TextView name, TextView connection, TextView server) {
    const TextView whole = trim_blanks(connection).empty() ? own_account : connection;
    const bool for_driver = has_key(whole, driver_keys);
    SecretText text = with_value(whole, database_keys,
                                 for_driver ? TextView(u"Database") : database_keys[0], name);
    if (server.empty() || names_its_server(whole, for_driver)) return text;
    return with_value(text.view(), server_keys, for_driver ? TextView(u"Server") : server_keys[0],
                      server);
}

base::Text shown_value(TextView connection, std::span<const TextView> keys) {
    const std::optional<SecretText> value = value_of_key(connection, keys);
    return value ? base::Text(value->view()) : base::Text();
}

base::Text shown_server(TextView connection) {
    base::Text server = shown_value(connection, server_keys);
    if (!server.empty()) return server;
    const auto nested = value_of_key(connection, nested_keys);
    return nested ? shown_value(nested->view(), server_keys) : server;
}

// A driver's whole text may stand in the value of one key, also without quotes.
base::Text masked_text(TextView connection, int depth) {
    base::Text text;
    const char16_t* copied = connection.data();
    for (const ConnectionPiece& piece : connection_pieces(connection)) {
        const bool is_plain = piece.value.find(u'=') == TextView::npos;
        if (is_plain && !is_password(piece.key)) continue;
        text.append(copied, piece.value.data());
        copied = piece.value.data() + piece.value.size();
        if (is_password(piece.key) || depth == deepest_nesting) {
            text.append(hidden_password);
            continue;
        }
        const SecretText inner = unquoted_value(piece.value);
        const base::Text masked = masked_text(inner.view(), depth + 1);
        if (masked == inner.view()) {
            text.append(piece.value);
        } else if (quoted_length(piece.value) == piece.value.size()) {
            text.append(in_quotes(masked, piece.value.front(), closing_mark(piece.value)).view());
        } else {
            text.append(masked);
        }
    }
    return text.append(copied, connection.data() + connection.size());
}

// As they are written and as they are meant; longer ones first, which may hold others.
void collect_passwords(TextView connection, int depth, std::vector<SecretText>& passwords) {
    for (const ConnectionPiece& piece : connection_pieces(connection)) {
        SecretText inner = unquoted_value(piece.value);
        const bool hidden = depth == deepest_nesting && inner.view().find(u'=') != TextView::npos;
        if (is_password(piece.key) || hidden) {
            passwords.emplace_back(piece.value);
            passwords.push_back(std::move(inner));
        } else if (depth < deepest_nesting) {
            collect_passwords(inner.view(), depth + 1, passwords);
        }
    }
}

ListedDatabase listed_database(TextView entry, TextView connection, TextView server) {
    const bool is_whole = entry.find(u'=') != TextView::npos;
    SecretText text = is_whole ? SecretText(entry) : connection_to(entry, connection, server);
    base::Text its_server = shown_server(text.view());
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
    return masked_text(connection, 0);
}

base::Text words_without_passwords(base::Text words, TextView connection) {
    std::vector<SecretText> passwords;
    collect_passwords(connection, 0, passwords);
    std::ranges::sort(passwords, std::greater(), [](const SecretText& one) { return one.size(); });
    for (const SecretText& password : passwords) {
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
