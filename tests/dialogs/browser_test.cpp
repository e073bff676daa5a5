// What the query browser decides: which queries run, connection texts, and how a query goes.

#include <gtest/gtest.h>

#include "base/error.h"
#include "dialogs/browser_session.h"
#include "dialogs/cell_text.h"
#include "tests/support/fake_clock.h"

namespace tavrix::dialogs {
namespace {

using base::Text;

// Statements between tildes.
TEST(SelectOnly, TakesOneStatementThatReads) {
    constexpr base::TextView taken =
        uR"(SELECT * FROM dok_fak~;with x as (select 1 a), y as (select 2 b) select * from x, y;;
~select 1 union all select 2 except (select 3)~select a, (select max(b) from t) from u where c in (select d from v)
~select [update], "into", N'it''s; exec', "d""x" from [a]]b] -- drop table t
where x=1~/* a /* delete */ b */ select case when a=1 then 2 else 3 end from t
~select a from t order by a offset 5 rows fetch next 10 rows only~select 1e5, 0x1F, 1.5, updated, @@version from t with (nolock)
~select * from a inner merge join b on a.i=b.i option (merge union)
~(select 1) union select {ts '2026-11-22 10:00:00'}~select throw, t.receive from d.s.t t where conversation=1~select a.b.c*1.5, d..e from d.[s].t
)";
    for (const base::Text& sql : base::split(taken, u'~')) {
        EXPECT_FALSE(refusal_of(base::trim(sql))) << base::to_utf8(sql);
    }
}

// What is to blame stands between bars.
TEST(SelectOnly, RefusesWhatDoesMoreAndShowsTheWord) {
    constexpr base::TextView refused =
        u"|delete| from t~select 1 |delete| t~select 1|;|select 2"
        u"~select 1 |select| 2~select a |into| b from t~with x as (select 1 a) |delete| x~||~||-- x"
        u"~with x as (select 1 a) select max(a) |select| 2~|exec| sp_who~|(|exec p)~select 1 |)|"
        u"~select * from |openrowset|('x','delete t')~select * from |OpenQuery|(s,'delete t')"
        u"~select |next| value for n~select * from t with (|tablockx|)~select 1 |waitfor| delay '1'"
        u"~select '''' |update| t set a=1~select 1 /* -- */ |drop| table t -- */~select 1 |{|call "
        u"p}"
        u"~select 1 --\n|truncate| table t~select |1d|rop table t~select |1e|into t from u"
        u"~select |0xdel|ete t~select £|into| t~select 1\u00A0|drop|\u3000table t~select 1 "
        u"|'|delete"
        u"~select 1 |/*| /* */ delete t~select 1 --|\r|delete t~select 1 |\uFF44|elete t"
        u"~select 1 |merge| t using u on 1=1~select 1 |commit|~select * from |srv|.db.dbo.t"
        u"~select * from |[a.b]| . \"d\" /**/ .. t~select * from |srv|.db.\u6570\u636e.t"
        u"~select a x |receive| * from q~select * from sys.|[fn_trace_gettable]|('x', 1)";
    for (const base::Text& marked : base::split(refused, u'~')) {
        const std::size_t begin = marked.find(u'|');
        const auto refusal = refusal_of(base::remove_characters(marked, u"|"));
        ASSERT_TRUE(refusal) << base::to_utf8(marked);
        EXPECT_EQ(std::pair(refusal->position, refusal->length),
                  std::pair(begin, marked.find(u'|', begin + 1) - begin - 1))
            << base::to_utf8(marked);
    }
    EXPECT_EQ(refusal_of(u"select 1\r\n  update t")->words,
              u"Słowo UPDATE (wiersz 2, znak 3): tu można tylko czytać (SELECT).");
}

/// Everything of the databases in one text.
Text listed(int count, base::TextView entries, base::TextView connection, base::TextView server) {
    std::vector<base::SecretText> split;
    for (const Text& entry : base::split(entries, u'~')) split.emplace_back(base::TextView(entry));
    Text all;
    for (const auto& database : list_databases(count, split, connection, server)) {
        all += database.name + u"|" + database.server + u"|" + Text(database.connection.view());
    }
    return all;
}

TEST(ConnectionText, EntriesBecomeDatabases) {
    const struct {
        const char16_t *entry, *connection, *server, *expected;
    } cases[] = {
        {u" Server=s1;Database=b1;Pwd=x ", u"Server=s0", u"s9",
         u"b1|s1|Server=s1;Database=b1;Pwd=x"},
        {u"b2", u"Server=s1; database = b1 ;A=x", u"s9", u"b2|s1|Server=s1; database = b2 ;A=x"},
        {u"b2", u"Password='a;b'", u" s9 ",
         u"b2|s9|Password='a;b';Initial Catalog=b2;Data Source=s9"},
        {u"b2", u" ", u"s9",
         u"b2|s9|Provider=SQLOLEDB;Integrated Security=SSPI;Initial Catalog=b2;Data Source=s9"},
        {u"a;\"b", u"Data Source=s;", u"", u"a;\"b|s|Data Source=s;Initial Catalog=\"a;\"\"b\""},
        {u"a;}b", u"Driver={x};Server=s", u"", u"a;}b|s|Driver={x};Server=s;Database={a;}}b}"},
        {u"b2", u"DSN=firma", u"s9", u"b2|s9|DSN=firma;Database=b2"},
        {u"b2", u"Provider=MSDASQL.1;Extended Properties=\"DRIVER=x;SERVER=s1\"", u"s9",
         u"b2|s1|Provider=MSDASQL.1;Extended Properties=\"DRIVER=x;SERVER=s1\";Initial Catalog=b2"},
        {u"b2", u"File Name=x.udl", u"s9", u"b2|s9|File Name=x.udl;Initial Catalog=b2"},
        {u"b2", u"Initial Catalog=a;Server=s;Database='x;y' ;A=1;Database=c", u"",
         u"b2|s|Initial Catalog=b2;Server=s;A=1;"}};
    for (const auto& [entry, connection, server, expected] : cases) {
        EXPECT_EQ(listed(1, entry, connection, server), expected);
    }
    for (const auto& [count, found] :
         {std::pair{-1, u""}, {0, u""}, {1, u"||a="}, {9, u"||a=||b="}})
        EXPECT_EQ(listed(count, u"~a=~ ~b=", u"", u""), found) << count;
}

TEST(ConnectionText, PasswordsAreHidden) {
    const std::pair<const char16_t*, const char16_t*> cases[] = {
        {u" PWD = \"a;\"\"b\" ; Jet OLEDB:Database Password='x;y'",
         u" PWD = *** ; Jet OLEDB:Database Password=***"},
        {u"Pwd={a;}}b};Server=s", u"Pwd=***;Server=s"},
        {u"Password=\"no end;x", u"Password=***"},
        {u"Extended Properties=\"DRIVER=x;PWD=a;UID='b\";Client Secret\u00A0=b",
         u"Extended Properties=\"DRIVER=x;PWD=***;UID='b\";Client Secret\u00A0=***"},
        {u"P='a=\"NewPwd=x''y\"';Q=R=Pwd=z", u"P='a=\"NewPwd=***\"';Q=R=Pwd=***"},
        {u"App={x;Password=a", u"App={x;Password=***"},
        {u"Password=;password=b", u"Password=***;password=***"}};
    for (const auto& [text, expected] : cases) EXPECT_EQ(without_passwords(text), expected);
    EXPECT_EQ(words_without_passwords(u"Login failed: 'a}b', {a}}b}, zzz",
                                      u"Pwd={a}}b};Password=;X='Token=zz;Pwd=zzz'"),
              u"Login failed: '***', ***, ***");
}

TEST(ConnectionText, IsSplitWhereJoiningGivesItBack) {
    const Text most(255, u'x');
    const std::pair<Text, std::size_t> cases[] = {{u"", 0},
                                                  {most, 255},
                                                  {most + u"y", 255},
                                                  {most + u" y", 254},
                                                  {most.substr(1) + u" y", 253},
                                                  {most.substr(1) + u"\xD83D\xDE00", 254},
                                                  {Text(600, u' '), 255}};
    for (const auto& [text, first] : cases) {
        const SplitConnection split = split_connection(text);
        EXPECT_EQ(split.first.size(), first);
        EXPECT_EQ(Text(split.first.view()).append(split.second.view()), text);
    }
}

/// What a server does and what it was told, also after its connection is gone: the step that fails,
/// and the one whose answer does not come.
struct FakeServer {
    std::string told, fails, silent, step;
    std::size_t rows = 3, nulls = 1, most_at_once = 0;
};

struct FakeQuery final : ports::QueryConnection {
    explicit FakeQuery(FakeServer& its_server) : server(its_server) {}
    ~FakeQuery() override { server.told += "gone"; }
    void hear(const char* step) {
        server.told += (server.step = step) + " ";
        if (server.fails == step)
            throw base::AutomationError({}, u"Provider", u"Login failed, Password 'tajne'");
    }
    void open(const base::SecretText&) override { hear("open"); }
    bool done() override { return server.step != server.silent; }
    void set_up() override { hear("set"); }
    void begin_transaction() override { hear("begin"); }
    void execute(base::TextView, std::size_t) override { hear("execute"); }
    std::vector<Text> columns() override {
        return server.rows == 0 ? std::vector<Text>() : std::vector<Text>{u"nazwa", u""};
    }
    std::vector<std::vector<ports::Value>> rows(std::size_t count) override {
        hear("rows");
        server.most_at_once = std::max(server.most_at_once, count);
        std::vector<std::vector<ports::Value>> page;
        for (; page.size() < count && given < server.rows; ++given)
            page.emplace_back(1 + server.nulls)[0] = std::int64_t(given);
        return page;
    }
    void cancel() noexcept override { server.told += (server.step = "cancel") + " "; }
    void roll_back() noexcept override { server.told += (server.step = "rollback") + " "; }
    void close() noexcept override { server.told += "close "; }

    FakeServer& server;
    std::size_t given = 0;
};

struct BrowserSessionTest : testing::Test {
    FakeServer server;
    test::FakeClock clock;

    BrowserSession make_session() {
        std::vector<base::SecretText> entries;
        entries.emplace_back(base::TextView(u"Server=s;Database=b;Password=tajne"));
        return {list_databases(1, entries, u"", u""),
                [this] { return std::make_unique<FakeQuery>(server); }, clock};
    }
    /// Goes on for so many tenths of a second, or until it is over; gives how long it took.
    int go_on(BrowserSession& session, int most = 10'000) {
        int ticks = 0;
        for (; session.is_busy() && ticks < most; ++ticks) {
            session.go_on();
            clock.sleep(std::chrono::milliseconds(100));
        }
        return ticks;
    }
};

TEST_F(BrowserSessionTest, EveryQueryIsCancelledRolledBackAndClosed) {
    const struct {
        const char *fails, *silent;
        int least_ticks;
        std::string told;
        Text status;
    } cases[] = {
        {"", "", 0, "open set begin execute rows rows cancel rollback close ",
         u"Liczba wierszy: 3."},
        {"open", "", 0, "open cancel close ", u"Nie udało się połączyć z serwerem."},
        {"begin", "", 0, "open set begin cancel rollback close ", u"Serwer nie wykonał zapytania."},
        {"rows", "", 0, "open set begin execute rows cancel rollback close ",
         u"Nie udało się odczytać wszystkich wierszy."},
        {"", "open", 200, "open cancel close ", u"Serwer nie odpowiada."},
        {"", "set", 100, "open set cancel close ", u"Serwer nie odpowiada."},
        {"", "begin", 100, "open set begin cancel rollback close ", u"Serwer nie odpowiada."},
        {"", "rollback", 50, "open set begin execute rows rows cancel rollback ",
         u"Liczba wierszy: 3."},
        {"", "execute", 400, "open set begin execute cancel rollback close ",
         u"Zapytanie trwało za długo i zostało przerwane."},
        // The connection is dropped as it is.
        {"execute", "cancel", 50, "open set begin execute cancel ",
         u"Serwer nie wykonał zapytania."}};
    for (const auto& [fails, silent, least_ticks, told, status] : cases) {
        server = {"", fails, silent, ""};
        BrowserSession session = make_session();
        session.run(0, u"select 1");
        const int ticks = go_on(session);
        EXPECT_EQ(server.told, told + "gone");
        EXPECT_EQ(session.status(),
                  status + (*fails != 0 ? u"\nLogin failed, Password '***'" : u""));
        EXPECT_TRUE(ticks >= least_ticks && ticks <= least_ticks + 9) << ticks << ' ' << told;
    }
}

TEST_F(BrowserSessionTest, TheUserCanStopItAndTheWindowCanGo) {
    server.silent = "execute";
    for (const bool stops : {true, false}) {
        BrowserSession session = make_session();
        session.run(0, u"select 1");
        go_on(session, 5);
        server.told.clear();
        EXPECT_EQ(stops && session.stop(), stops);
        if (stops) {
            EXPECT_TRUE(session.status() == u"Przerywam…" && !session.stop());
            go_on(session);
        }
        EXPECT_EQ(session.status(), stops ? u"Przerwano." : u"Wykonuję zapytanie…");
    }
    EXPECT_EQ(server.told, "cancel rollback gone");
}

TEST_F(BrowserSessionTest, PagesOfRowsUpToTheLimit) {
    BrowserSession session = make_session();
    for (const std::size_t count : {QueryRun::row_limit + 1, std::size_t{450}}) {
        server.rows = count;
        session.run(0, u"select 1");
        go_on(session);
        EXPECT_EQ(session.result().is_cut, count > QueryRun::row_limit);
        EXPECT_EQ(session.result().rows.size(), std::min(count, QueryRun::row_limit));
    }
    for (int i = 0; i < 4; ++i) session.show_next_page();
    EXPECT_EQ(session.page_text(), u"Wiersze 401–450 z 450");
    EXPECT_TRUE(session.cell(49, 0) == u"449" && !session.cell(50, 0) && !session.cell(0, 1));
    EXPECT_EQ(session.whole_row(0), u"nazwa: 400\nkolumna 2: NULL\n");
    session.show_previous_page();
    EXPECT_EQ(session.page_start(), 200u);
    EXPECT_TRUE(session.run(0, u"delete t") && !session.is_busy());
    session.connect(1);
    EXPECT_EQ(session.status(), u"Wybierz bazę z listy.");
    server.rows = 0;
    session.run(0, u"select 1");
    go_on(session);
    EXPECT_EQ(session.status(), u"Zapytanie nie daje żadnych wierszy.");
}

// Empty cells take memory too.
TEST_F(BrowserSessionTest, WideRowsAreTakenFewAtATimeUpToTheLimit) {
    server.rows = 1000;
    server.nulls = 2000;
    BrowserSession session = make_session();
    session.run(0, u"select 1");
    go_on(session);
    EXPECT_TRUE(session.result().is_cut);
    EXPECT_LT(server.most_at_once, 50u);
    EXPECT_EQ(session.whole_row(0), u"nazwa: 0\nkolumna 2: NULL\n");
}

TEST(CellText, IsForPeopleAndExact) {
    EXPECT_TRUE(cell_text(0.1) == u"0,1" && cell_text(-0.0) == u"0");
    EXPECT_EQ(cell_text(Text(3999, u'x') + u"\xD83D\xDE00"), Text(3999, u'x') + u"…");
    EXPECT_EQ(cell_text(base::Bytes(33, 0)), u"0x" + Text(64, u'0') + u"…");
    EXPECT_EQ(cell_text(Text(4001, u'x')), Text(4000, u'x') + u"…");
    EXPECT_EQ(one_line(u"a\r\nb\nc\td"), u"a¶b¶c d");
}

}  // namespace
}  // namespace tavrix::dialogs
