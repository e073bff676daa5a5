#include "dialogs/query_run.h"

#include <gtest/gtest.h>

#include "base/error.h"
#include "dialogs/browser_session.h"
#include "dialogs/cell_text.h"
#include "tests/support/fake_clock.h"

namespace tavrix::dialogs {
namespace {

using base::Text;

/// What a server does and what it was told, also after its connection is gone.
struct FakeServer {
    std::string told;
    std::string never_answers;  ///< the step whose answer does not come, "cancel" among them
    std::string fails_at;       ///< the step that fails
    std::size_t row_count = 3;

    void hear(const std::string& step) {
        told += step + " ";
        if (fails_at == step) {
            throw base::AutomationError(base::ErrorNumber::database_failed, u"Provider",
                                        u"Login failed, Password 'tajne'");
        }
    }
};

struct FakeQuery final : ports::QueryConnection {
    explicit FakeQuery(FakeServer& its_server) : server(its_server) {}
    ~FakeQuery() override { server.told += "gone"; }
    void open(const base::SecretText&) override { begin("open"); }
    bool done() override { return step != server.never_answers || ends; }
    void begin_transaction() override { server.hear("begin"); }
    void execute(base::TextView, std::size_t limit) override {
        EXPECT_EQ(limit, QueryRun::row_limit + 1);
        begin("execute");
    }
    std::vector<Text> columns() override {
        server.hear("columns");
        return {u"nazwa", u""};
    }
    std::vector<std::vector<ports::Value>> rows(std::size_t count) override {
        if (given == 0) server.hear("rows");
        std::vector<std::vector<ports::Value>> page;
        for (; page.size() < count && given < server.row_count; ++given) {
            page.push_back({ports::Value(std::int64_t(given)), ports::Value()});
        }
        return page;
    }
    void cancel() noexcept override {
        server.told += "cancel ";
        ends = server.never_answers != "cancel";
        if (!ends) step = "cancel";
    }
    void roll_back() noexcept override { server.told += "rollback "; }
    void close() noexcept override { server.told += "close "; }
    void begin(const std::string& what) {
        server.hear(what);
        step = what;
    }

    FakeServer& server;
    std::string step;
    bool ends = false;
    std::size_t given = 0;
};

class BrowserSessionTest : public testing::Test {
  protected:
    FakeServer server;
    test::FakeClock clock;

    BrowserSession make_session() {
        std::vector<base::SecretText> entries;
        entries.emplace_back(base::TextView(u"Data Source=s;Database=b;Password=tajne"));
        return {list_databases(1, entries, u"", u""),
                [this] { return std::make_unique<FakeQuery>(server); }, clock};
    }
    /// Tenths of a second until it is over.
    int finish(BrowserSession& session) {
        int ticks = 0;
        for (; session.is_busy() && ticks < 10'000; ++ticks) {
            session.go_on();
            clock.sleep(std::chrono::milliseconds(100));
        }
        return ticks;
    }
};

TEST_F(BrowserSessionTest, EveryQueryIsCancelledRolledBackAndClosed) {
    const struct {
        const char* fails_at;
        const char* never_answers;
        int least_ticks;
        const char* told;
        const char16_t* status;
    } cases[] = {
        {"", "", 0, "open begin execute columns rows cancel rollback close gone",
         u"Liczba wierszy: 3."},
        {"open", "", 0, "open cancel close gone",
         u"Nie udało się połączyć z serwerem.\nLogin failed, Password '***'"},
        {"begin", "", 0, "open begin cancel rollback close gone",
         u"Serwer nie wykonał zapytania.\nLogin failed, Password '***'"},
        {"rows", "", 0, "open begin execute columns rows cancel rollback close gone",
         u"Nie udało się odczytać wszystkich wierszy.\nLogin failed, Password '***'"},
        {"", "open", 200, "open cancel close gone", u"Serwer nie odpowiada."},
        {"", "execute", 400, "open begin execute cancel rollback close gone",
         u"Zapytanie trwało za długo i zostało przerwane."},
        // Not even the cancelling: the connection is dropped as it is.
        {"execute", "cancel", 50, "open begin execute cancel gone",
         u"Serwer nie wykonał zapytania.\nLogin failed, Password '***'"},
    };
    for (const auto& [fails_at, never_answers, least_ticks, told, status] : cases) {
        server = {{}, never_answers, fails_at};
        BrowserSession session = make_session();
        session.run(0, u"select 1");
        const int ticks = finish(session);
        EXPECT_EQ(server.told, told);
        EXPECT_EQ(session.status(), status) << base::to_utf8(session.status());
        EXPECT_TRUE(ticks >= least_ticks && ticks <= least_ticks + 60) << ticks << ' ' << told;
    }
}

TEST_F(BrowserSessionTest, TheUserCanStopItAndTheWindowCanGo) {
    server.never_answers = "execute";
    {
        BrowserSession session = make_session();
        session.run(0, u"select 1");
        for (int i = 0; i < 5; ++i) session.go_on();
        EXPECT_TRUE(session.stop());
        finish(session);
        EXPECT_EQ(session.status(), u"Przerwano.");
        EXPECT_FALSE(session.stop());
        session.run(0, u"select 1");
        for (int i = 0; i < 5; ++i) session.go_on();
        server.told.clear();
    }
    EXPECT_EQ(server.told, "cancel rollback close gone");
}

TEST_F(BrowserSessionTest, PagesOfRowsUpToTheLimit) {
    BrowserSession session = make_session();
    for (const std::size_t count : {std::size_t{450}, QueryRun::row_limit + 1}) {
        server.row_count = count;
        session.run(0, u"select 1");
        finish(session);
        EXPECT_EQ(session.result().is_cut, count > QueryRun::row_limit);
        EXPECT_EQ(session.result().rows.size(), std::min(count, QueryRun::row_limit));
    }
    server.row_count = 450;
    session.run(0, u"select 1");
    finish(session);
    session.show_next_page();
    session.show_next_page();
    session.show_next_page();
    EXPECT_EQ(session.page_text(), u"Wiersze 401–450 z 450");
    EXPECT_EQ(session.cell(49, 0), u"449");
    EXPECT_FALSE(session.cell(50, 0) || session.cell(0, 1));
    EXPECT_EQ(session.whole_row(0), u"nazwa: 400\nkolumna 2: NULL\n");
    session.show_previous_page();
    EXPECT_EQ(session.page_start(), 200u);
    EXPECT_TRUE(session.run(0, u"delete t"));
    EXPECT_FALSE(session.is_busy());
}

TEST(CellText, IsForPeopleAndExact) {
    const std::pair<ports::Value, Text> cases[] = {
        {0.1, u"0,1"},
        {1e22, u"1e+22"},
        {true, u"tak"},
        {false, u"nie"},
        {std::int64_t{-9007199254740993}, u"-9007199254740993"},
        {base::DateTime{2026, 11, 14}, u"2026-11-14"},
        {base::Bytes(32, 0xA5), u"0x" + Text(base::replace_all(Text(32, u'x'), u"x", u"A5"))},
        {base::Bytes(33, 0), u"0x" + Text(64, u'0') + u"…"},
        {u"", u""},
        {Text(4001, u'x'), Text(4000, u'x') + u"…"}};
    for (const auto& [value, text] : cases) EXPECT_EQ(cell_text(value), text);
    EXPECT_EQ(cell_text({}), std::nullopt);
    EXPECT_EQ(one_line(u"a\r\nb\nc\td"), u"a¶b¶c d");
}

}  // namespace
}  // namespace tavrix::dialogs
