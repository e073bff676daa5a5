#include "dialogs/connection_text.h"

#include <gtest/gtest.h>

namespace tavrix::dialogs {
namespace {

using base::Text;

Text shown(const ListedDatabase& database) {
    return database.name + u"|" + database.server + u"|" + Text(database.connection.view());
}

TEST(ConnectionText, EntriesBecomeDatabases) {
    const struct {
        const char16_t* entry;
        const char16_t* connection;
        const char16_t* server;
        const char16_t* expected;
    } cases[] = {
        {u" Data Source=s1;Initial Catalog=b1;Password=x ", u"Data Source=s0", u"s9",
         u"b1|s1|Data Source=s1;Initial Catalog=b1;Password=x"},
        {u"b2", u"Server=s1; database = b1 ;Pwd=x", u"s9",
         u"b2|s1|Server=s1; database = b2 ;Pwd=x"},
        {u"b2", u"Provider=SQLOLEDB;Password='a;b'", u" s9 ",
         u"b2|s9|Provider=SQLOLEDB;Password='a;b';Initial Catalog=b2;Data Source=s9"},
        {u"b2", u" ", u"s9",
         u"b2|s9|Provider=SQLOLEDB;Integrated Security=SSPI;Initial Catalog=b2;Data Source=s9"},
        {u"a;\"b", u"Data Source=s;", u"", u"a;\"b|s|Data Source=s;Initial Catalog=\"a;\"\"b\""},
        {u"a;}b", u"Driver={SQL Server};Server=s", u"",
         u"a;}b|s|Driver={SQL Server};Server=s;Database={a;}}b}"},
        {u"b2", u"DSN=firma", u"s9", u"b2|s9|DSN=firma;Database=b2"},
    };
    for (const auto& [entry, connection, server, expected] : cases) {
        std::vector<base::SecretText> entries;
        entries.emplace_back(base::TextView(entry));
        const auto databases = list_databases(1, entries, connection, server);
        ASSERT_EQ(databases.size(), 1u);
        EXPECT_EQ(shown(databases[0]), expected) << base::to_utf8(shown(databases[0]));
    }
}

TEST(ConnectionText, CountIsTheHostsAsFarAsThereAreEntries) {
    std::vector<base::SecretText> entries;
    for (const char16_t* entry : {u"", u"a", u" ", u"b", u"c"})
        entries.emplace_back(base::TextView(entry));
    for (const auto& [count, found] : {std::pair{-1, 0u}, {0, 0u}, {2, 2u}, {99, 3u}}) {
        EXPECT_EQ(list_databases(count, entries, u"", u"").size(), found) << count;
    }
}

TEST(ConnectionText, PasswordsAreHidden) {
    const std::pair<const char16_t*, const char16_t*> cases[] = {
        {u"User ID=sa;Password=tajne;X=1", u"User ID=sa;Password=***;X=1"},
        {u" PWD = \"a;\"\"b\" ; Jet OLEDB:Database Password='x;y'",
         u" PWD = *** ; Jet OLEDB:Database Password=***"},
        {u"Pwd={a;}}b};Server=s", u"Pwd=***;Server=s"},
        {u"Password=\"bez konca;x", u"Password=***;x"},
        {u"App={x;Password=tajne", u"App={x;Password=***"},
        {u"Password=;password=b", u"Password=***;password=***"},
        {u"", u""},
    };
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(without_passwords(text), expected) << base::to_utf8(without_passwords(text));
    }
    EXPECT_EQ(words_without_passwords(u"Login failed: 'a}b'", u"Pwd={a}}b};Password="),
              u"Login failed: '***'");
}

TEST(ConnectionText, IsSplitWhereJoiningGivesItBack) {
    const Text full(255, u'x');
    const struct {
        Text text;
        std::size_t first;
    } cases[] = {{u"", 0},
                 {full, 255},
                 {full + u"y", 255},
                 {full + u" y", 254},
                 {Text(254, u'x') + u" y", 253},
                 {Text(254, u'x') + u"\xD83D\xDE00", 254},
                 {Text(600, u' '), 255}};
    for (const auto& [text, first] : cases) {
        const SplitConnection split = split_connection(text);
        EXPECT_EQ(split.first.size(), first);
        EXPECT_EQ(Text(split.first.view()).append(split.second.view()), text);
    }
}

}  // namespace
}  // namespace tavrix::dialogs
