// The library's Database port over ADODB.Connection and ADODB.Recordset, and what it counts on in
// them.

#include "base/error.h"
#include "ksef/rows/document_row.h"
#include "ports/windows/ado_database.h"
#include "tests/com/host_database.h"

namespace tavrix::test {
namespace {

using windows::LateBound;

constexpr std::int32_t use_server = 2;
constexpr std::int32_t use_client = 3;

class Ado : public testing::Test {
  protected:
    HostDatabase database;
    LateBound connection = LateBound::create(u"ADODB.Connection");

    void SetUp() override { connect(); }

    /// `habits` are those of the development provider.
    void connect(const char16_t* habits = u"") {
        connection = LateBound::create(u"ADODB.Connection");
        connection.call(u"Open", u"Data Source=" + database.path() + u";" + habits);
    }
    windows::AdoDatabase port() {
        return windows::AdoDatabase(ComPointer<IDispatch>(connection.dispatch()));
    }

    LateBound open(const char16_t* sql, std::int32_t location = use_client) {
        constexpr std::int32_t open_static = 3;
        constexpr std::int32_t lock_batch_optimistic = 4;
        LateBound rows = LateBound::create(u"ADODB.Recordset");
        rows.put(u"CursorLocation", location);
        rows.call(u"Open", sql, ComPointer<IDispatch>(connection.dispatch()), open_static,
                  lock_batch_optimistic);
        return rows;
    }
    template <typename Action>
    static std::uint32_t error_of(Action action) {
        try {
            action();
        } catch (const base::AutomationError& error) {
            EXPECT_FALSE(error.description().empty());
            return static_cast<std::uint32_t>(error.number());
        }
        return 0;
    }
};

TEST_F(Ado, ThePortReadsAndWritesThroughTheHostsConnection) {
    windows::AdoDatabase port = this->port();
    const auto rows = port.open(u"select top 1 * from dok_fak where ddout_id=1");
    ASSERT_FALSE(rows->at_end());
    EXPECT_EQ(rows->field(u"opis"), ports::Value(u"Zażółć"));
    EXPECT_EQ(rows->field(u"ddout_data_wyst"),
              ports::Value(base::DateTime{2026, 11, 14, 10, 20, 30}));
    EXPECT_EQ(rows->field(u"kwota"), ports::Value(12.5));
    EXPECT_EQ(rows->field(u"zaplacona"), ports::Value(true));
    rows->set_field(u"numer_ksef", base::Text(u"K-1"));
    rows->set_field(u"ddout_data_wyst", base::DateTime{2026, 12, 1, 0, 0, 0});
    EXPECT_EQ(database.stored(u"numer_ksef", 1), ports::Value()) << "changes wait for the batch";
    rows->update_batch();
    EXPECT_EQ(database.stored(u"numer_ksef", 1), ports::Value(u"K-1"));
    EXPECT_EQ(database.stored(u"ddout_data_wyst", 1),
              ports::Value(base::DateTime{2026, 12, 1, 0, 0, 0}));
    rows->move_next();
    EXPECT_TRUE(rows->at_end());

    port.execute(u"insert into dok_fak (ddout_id, opis) values (8, 'nowy')");
    EXPECT_EQ(database.stored(u"opis", 8), ports::Value(u"nowy"));
    EXPECT_EQ(error_of([&] { port.open(u"select * from brak"); }), 0x80040E37u);
    windows::AdoDatabase nothing{ComPointer<IDispatch>()};
    EXPECT_EQ(error_of([&] { nothing.open(u"select 1"); }), 0x800A005Bu)
        << "object variable not set";
}

// The columns of a document, with a key or without; three documents of one day that were never
// sent.
constexpr const char* with_key = "primary key";
constexpr const char* without_key = "";

class AdoDocument : public Ado {
  protected:
    static constexpr base::DateTime now{2026, 11, 21, 10, 0, 0};
    const base::Text table = u"dok";

    void make_documents(const std::string& key) {
        database.run("drop table if exists dok; create table dok (ddout_id integer " + key +
                     ", ddout_data_wyst datetime, numer_ksef nvarchar(50),"
                     " NumerRef_ksef nvarchar(50), HashFaktury char(50), status_ksef int,"
                     " StatusStr_ksef varchar(10), UPO_ksef nvarchar, Export_Opis_bledu_ksef"
                     " nvarchar, DATA_OPERACJI datetime);"
                     "insert into dok (ddout_id) values (1), (2), (3);"
                     "update dok set ddout_data_wyst='2026-11-21',"
                     " DATA_OPERACJI='2026-11-21 08:00:00.123'");
    }
    /// Writes document 2; the error's number, 0 for none.
    std::uint32_t record(const char16_t* number) {
        windows::AdoDatabase host = port();
        ksef::DocumentRow row(host, table, 2);
        return error_of([&] {
            row.record({u"REF", number, u"hash", u"Opis, który jest długi"}, now);
            row.record_upo(base::Text(5000, u'ż'), now);
        });
    }
    base::Text number(int id) { return ports::text_of(database.stored(u"numer_ksef", id, table)); }
    /// What the batch itself does to the same row, without the library's care.
    std::uint32_t write_by_hand() {
        const LateBound rows = open(
            u"select top 1 numer_ksef, ddout_data_wyst, DATA_OPERACJI from dok where ddout_id=2");
        rows.object(u"Fields", u"numer_ksef").put(u"Value", u"N");
        rows.object(u"Fields", u"DATA_OPERACJI").put(u"Value", Variant::date(46000));
        return error_of([&] { rows.call(u"UpdateBatch"); });
    }
};

TEST_F(AdoDocument, OnlyTheOneThatIsMeantIsWrittenWhereAdoKnowsNoKey) {
    const std::pair<const char*, const char16_t*> tables[] = {{without_key, u""},
                                                              {with_key, u"Hidden Keys=no"}};
    for (const auto& [beginning, habits] : tables) {
        make_documents(beginning);
        connect(habits);
        EXPECT_EQ(record(u"K-2"), 0u) << beginning;
        EXPECT_EQ(number(2), u"K-2") << beginning;
        EXPECT_EQ(database.stored(u"UPO_ksef", 2, table), ports::Value(base::Text(5000, u'ż')));
        EXPECT_EQ(database.stored(u"StatusStr_ksef", 2, table), ports::Value(u"Opis, któr"));
        EXPECT_EQ(database.stored(u"DATA_OPERACJI", 2, table), ports::Value(now));
        for (const int untouched : {1, 3}) EXPECT_EQ(number(untouched), u"") << untouched;

        make_documents(beginning);
        EXPECT_EQ(write_by_hand(), 0x80004005u) << "too many rows, and all of them written";
        for (const int touched : {1, 2, 3}) EXPECT_EQ(number(touched), u"N") << touched;
    }
}

TEST_F(AdoDocument, RowsThatCannotBeToldApartAreLeftAlone) {
    make_documents(without_key);
    windows::AdoDatabase host = port();
    const auto one = host.open(u"select numer_ksef, ddout_data_wyst from dok where ddout_id=3");
    one->set_field(u"numer_ksef", base::Text(u"1"));
    one->set_field(u"NUMER_KSEF", base::Text(u"2"));
    one->update_batch();
    EXPECT_EQ(one->field(u"numer_ksef"), ports::Value(u"2"));
    make_documents(without_key);
    const auto rows = host.open(u"select numer_ksef, ddout_data_wyst from dok");
    rows->set_field(u"numer_ksef", base::Text(u"K"));
    EXPECT_NE(error_of([&] { rows->update_batch(); }), 0u);
    EXPECT_EQ(number(1) + number(2) + number(3), u"");
    rows->add_new();
    rows->set_field(u"numer_ksef", base::Text(u"nowy"));
    EXPECT_EQ(error_of([&] { rows->update_batch(); }), 0u) << "a new row needs no key";
    EXPECT_EQ(rows->field(u"numer_ksef"), ports::Value(u"nowy"));
}

TEST_F(AdoDocument, WriteThatTheServerReportsWronglyIsNoFailure) {
    constexpr std::pair<const char16_t*, std::uint32_t> servers[] = {
        {u"Row Count=none", 0x80040E38},  // written, but nobody says so
        {u"Deadlocks=1", 0x80004005},     // not written, the second time it is
        {u"Timeouts=1", 0x80040E31},
        {u"Datetime2=yes", 0x80040E38},  // 08:00:00.123 is not 08:00:00.1233333
    };
    for (const auto& [habits, failure] : servers) {
        make_documents(with_key);
        connect(habits);
        EXPECT_EQ(write_by_hand(), failure) << base::to_utf8(habits);
        for (const char* table : {with_key, without_key}) {
            make_documents(table);
            // As a column whose code page lacks a letter of the description.
            database.run(
                "create trigger t after update of StatusStr_ksef on dok begin update dok"
                " set StatusStr_ksef='Opis, kt?r' where ddout_id=new.ddout_id; end");
            connect(habits);
            EXPECT_EQ(record(u"K-2"), 0u) << base::to_utf8(habits) << ' ' << table;
            EXPECT_EQ(number(1) + number(2) + number(3), u"K-2") << base::to_utf8(habits);
        }
    }
    make_documents(with_key);
    connect();
    windows::AdoDatabase host = port();
    const auto rows = host.open(u"select numer_ksef from dok where ddout_id=2");
    rows->set_field(u"numer_ksef", base::Text(u"K-3"));
    database.run("delete from dok where ddout_id=2");
    EXPECT_EQ(error_of([&] { rows->update_batch(); }), 0x80040E38u) << "a row that is gone";
}

TEST_F(AdoDocument, WalkGoesOnBehindARowThatFails) {
    make_documents(with_key);
    connect(u"Datetime2=yes");
    database.run(
        "create trigger t before update on dok when old.ddout_id=2 begin"
        " select raise(abort, 'locked'); end");
    windows::AdoDatabase host = port();
    const auto rows =
        host.open(u"select ddout_id, numer_ksef, DATA_OPERACJI from dok order by ddout_id");
    std::string outcome;
    for (int walked = 0; !rows->at_end() && walked < 9; ++walked) {
        rows->set_field(u"numer_ksef", base::Text(u"K"));
        rows->set_field(u"DATA_OPERACJI", now);
        outcome += error_of([&] { rows->update_batch(); }) == 0 ? "written " : "failed ";
        rows->move_next();
    }
    database.run("drop trigger t");
    EXPECT_EQ(outcome, "written failed written ");
    EXPECT_EQ(number(1) + number(2) + number(3), u"KK");
}

// English settings take the comma for a mark between thousands, Polish ones refuse the point.
TEST_F(Ado, ColumnsTakeTextsAndDatesAlikeUnderEveryLocale) {
    database.run(
        "create table t (ddout_id integer primary key, kwota decimal(18,2), cena money,"
        " ile int, kiedy datetime, opis varchar(30), krotki nvarchar(10), dzien date,"
        " kod nchar(6)); insert into t (ddout_id, kod) values (1, 'a')");
    for (const char16_t* habits : {u"Locale=pl", u"Locale=en", u"Locale=en;Hidden Keys=no",
                                   u"Locale=en;Provider=SQLOLEDB"}) {
        connect(habits);
        windows::AdoDatabase port = this->port();
        const base::DateTime moment{2026, 11, 21, 8, 15, 30};
        const struct {
            const char16_t* column;
            ports::Value value;
            ports::Value stored;
        } assignments[] = {
            {u"kwota", u"1234,50", 1234.5},
            {u"kwota", u"1234.5", 1234.5},
            {u"cena", u"0,25", 0.25},
            {u"ile", u"200", std::int64_t{200}},
            {u"kiedy", u"2026-11-21 08:15:30", moment},
            {u"kiedy", moment, moment},
            {u"opis", moment, u"2026-11-21 08:15:30"},
            {u"krotki", moment, u"2026-11-21"},
            {u"opis", 1.5, u"1.5"},
            {u"opis", {}, {}},
        };
        for (const auto& [column, value, stored] : assignments) {
            const auto rows = port.open(u"select * from t where ddout_id=1");
            EXPECT_EQ(rows->field(u"kod"), ports::Value(u"a"));
            rows->set_field(column, value);
            rows->update_batch();
            EXPECT_EQ(database.stored(column, 1, u"t"), stored)
                << base::to_utf8(column) << ' ' << base::to_utf8(ports::text_of(value)) << ' '
                << base::to_utf8(habits);
        }
        const auto rows = port.open(u"select * from t where ddout_id=1");
        rows->set_field(u"dzien", moment);
        rows->update_batch();
        EXPECT_EQ(rows->capacity(u"krotki"), 10u);
        for (const auto& [column, value] :
             {std::pair{u"kwota", u"1 234,50"}, std::pair{u"kiedy", u"14.11.2026"},
              std::pair{u"krotki", u"01234567890"}}) {
            EXPECT_EQ(error_of([&] { rows->set_field(column, base::Text(value)); }), 0x80040E21u)
                << base::to_utf8(column);
        }
    }
    connect(u"Locale=en");
    const LateBound rows = open(u"select kwota, kod from t");
    rows.object(u"Fields", u"kwota").put(u"Value", u"1234,50");
    EXPECT_EQ(written(rows.object(u"Fields", u"kwota").get(u"Value").get()), "decimal 123450")
        << "what ADO itself makes of it";
    EXPECT_EQ(written(rows.object(u"Fields", u"kod").get(u"Value").get()), "text a     ");
}

TEST_F(Ado, ServersRowsAreOnlyReadAndKeepTheLibraryOutOfTheOneTransaction) {
    const LateBound rows = open(u"select opis from dok_fak where ddout_id=1", use_server);
    EXPECT_EQ(error_of([&] { rows.object(u"Fields", u"opis").put(u"Value", u"x"); }), 0x800A0CB3u);
    rows.call(u"Close");
    connection.call(u"BeginTrans");
    EXPECT_EQ(error_of([&] { connection.call(u"BeginTrans"); }), 0x8004D013u);
    EXPECT_EQ(error_of([&] { connection.call(u"Close"); }), 0x800A0CAEu);
    const LateBound unread(
        windows::object_of(connection.call(u"Execute", u"select opis from dok_fak").get()));
    const auto change = [this] {
        port().execute(u"update dok_fak set opis='w transakcji' where ddout_id=1");
    };
    EXPECT_EQ(error_of(change), 0x80004005u);
    unread.call(u"Close");
    EXPECT_EQ(error_of(change), 0u);
    connection.call(u"RollbackTrans");
    EXPECT_EQ(database.stored(u"opis", 1), ports::Value(u"Zażółć"));
    EXPECT_EQ(error_of([&] { connection.call(u"CommitTrans"); }), 0x8004D00Eu);
}

}  // namespace
}  // namespace tavrix::test
