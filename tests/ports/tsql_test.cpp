#include <gtest/gtest.h>

#include "ports/portable/sqlite_database.h"
#include "ports/portable/tsql/single_row.h"
#include "ports/portable/tsql/translate.h"
#include "tests/support/thrown.h"

namespace tavrix::ports {
namespace {

using base::Text;

std::string sqlite_of(std::string_view sql) {
    return tsql::translate(sql).sql;
}

TEST(TsqlTranslation, PutsTopBehindTheSelectItBelongsTo) {
    EXPECT_EQ(sqlite_of("select top 1 a, b from t where id=5"),
              R"(select rowid, "a" , "b" from "t" where "id" = 5 limit 1)");
    EXPECT_EQ(sqlite_of("select distinct top (3) a from dbo.[t x] with (nolock) order by a desc;"),
              R"(select distinct "a" from "t x" order by "a" desc limit 3)");
}

TEST(TsqlTranslation, RefusesWhatItDoesNotKnowAndSaysWhere) {
    constexpr std::pair<const char*, const char*> refused[] = {
        {"drop table t", "byte 0"},
        {"select a from t; delete from t", "byte 15"},
        {"select a from t where id=@id", "byte 25"},
        {"select a from t cross apply f(a)", "byte 16"},
        {"select a from t where a='never closed", "byte 24"},
        {"select charindex('x') from t", "byte 7"},
        {"", "byte 0"},
    };
    for (const auto& [sql, place] : refused) {
        const std::string what = test::thrown_by([&] { tsql::translate(sql); });
        EXPECT_NE(what.find(place), std::string::npos) << sql << " -> " << what;
    }
}

class Tsql : public testing::Test {
  protected:
    void SetUp() override {
        connection->execute_script(
            "create table firmy (id integer primary key, nip nvarchar(20), symbol nvarchar(20),"
            " zalozona datetime);"
            "create table Parametry (id integer, czy_eksf bit);"
            "insert into firmy values (1,'526-587-76-35','KD001','2026-11-20');"
            "insert into firmy values (2,'111 222 33 44','ko002',null);"
            "insert into Parametry values (1,1);");
    }

    Text value(const Text& expression) {
        const auto rows =
            connection->open_recordset(u"select " + expression + u" as v from firmy where id=1");
        return text_of(rows->field(u"V"));
    }

    std::shared_ptr<SqliteConnection> connection = SqliteConnection::open(":memory:", true);
};

TEST_F(Tsql, FunctionsMeanWhatSqlServerMeans) {
    const std::pair<const char16_t*, const char16_t*> expected[] = {
        {u"charindex('d0', symbol)", u"2"},
        {u"charindex('', symbol)", u"0"},
        {u"charindex('0', symbol, 4)", u"4"},
        {u"substring(symbol, 0, 2)", u"K"},
        {u"substring(symbol, 4, 100)", u"01"},
        {u"substring(symbol, 9, 1)", u""},
        {u"left(symbol, 2)+'/'+right(symbol, 3)", u"KD/001"},
        {u"replace(replace(nip,'-',''),'5265','x')", u"x877635"},
        {u"upper('zażółć')", u"ZAŻÓŁĆ"},
        {u"len('ab  ')", u"2"},
        {u"isnull(null, N'brak')", u"brak"},
        {u"'it''s'", u"it's"},
        {u"(select top 1 1 from Parametry where Parametry.id=firmy.id and czy_eksf<>0)", u"1"},
    };
    for (const auto& [expression, result] : expected) {
        EXPECT_EQ(value(expression), result) << base::to_utf8(expression);
    }
    EXPECT_THROW(value(u"\"no such column\""), base::AutomationError)
        << "a missing column must not read as a text";
}

// What another statement may write to.
TEST(SingleRow, IsOnlyWhatCanMeanNoOther) {
    const std::pair<const char16_t*, const char16_t*> statements[] = {
        {u"select top 1 a,(select 1 from u) from dok_fak where ddout_id=1001",
         u"dok_fak|ddout_id=1001"},
        {u"SELECT * FROM [moja baza]..[t]]x] WHERE t.ddout_id = -7 ;",
         u"[moja baza]..[t]]x]|t.ddout_id=-7"},
        {u"select a from t", u""},
        {u"select a from t where id=1 or 1=1", u""},
        {u"select a from t where id<>1", u""},
        {u"select a from t where id=1.5", u""},
        {u"select a from t where id='1'", u""},
        {u"select a from t where id=b", u""},
        {u"select a from t, u where id=1", u""},
        {u"select a from t join u on t.i=u.i where id=1", u""},
        {u"select a select b from t where id=1", u""},
        {u"select a from t where id=1 'never closed", u""},
    };
    for (const auto& [sql, expected] : statements) {
        const auto row = tsql::single_row_of(sql);
        EXPECT_EQ(row ? row->table + u'|' + row->condition : Text(), expected)
            << base::to_utf8(sql);
    }
}

TEST_F(Tsql, RowsAreWrittenEachForItselfAndTheLastWriterWins) {
    const auto rows = connection->open_recordset(u"select id,nip,zalozona from firmy");
    rows->set_field(u"NIP", Text(u"o'brien"));
    rows->set_field(u"zalozona", base::DateTime{2026, 11, 21, 8, 15, 30});
    EXPECT_EQ(value(u"nip"), u"526-587-76-35") << "nothing is written before the batch";
    connection->execute(u"update firmy set nip='inny' where id=1");
    rows->update_batch();
    EXPECT_EQ(value(u"nip"), u"o'brien");
    EXPECT_EQ(value(u"zalozona"), u"2026-11-21 08:15:30");

    rows->set_field(u"nip", Text(u"pierwszy"));
    rows->move_next();
    rows->set_field(u"nip", Text(u"drugi"));
    connection->execute(u"delete from firmy where id=2");
    EXPECT_THROW(rows->update_batch(), base::AutomationError) << "the second row is gone";
    EXPECT_EQ(value(u"nip"), u"pierwszy");
    EXPECT_NO_THROW(rows->update_batch()) << "a failed row is not sent again";

    const auto added = connection->open_recordset(u"select id,nip from firmy where id=7");
    ASSERT_TRUE(added->at_end());
    added->add_new();
    added->set_field(u"id", std::int64_t{7});
    added->set_field(u"nip", Text(u"777"));
    added->update_batch();
    EXPECT_EQ(value(u"(select nip from firmy where id=7)"), u"777");
}

// As SQL Server's columns do behind the other door.
TEST_F(Tsql, ColumnsTakeWhatTheyAreDeclaredFor) {
    connection->execute_script(
        "create table t (kwota decimal(18,2), ile int, kiedy datetime, dzien varchar(10),"
        " opis nvarchar(3), dowolny nvarchar, kod char(4)); insert into t values"
        " (0,0,'','','','','a   ')");
    const auto rows = connection->open_recordset(u"select * from t");
    EXPECT_EQ(rows->field(u"kod"), Value(u"a"));
    EXPECT_EQ(rows->capacity(u"OPIS"), 3u);
    EXPECT_EQ(rows->capacity(u"dowolny"), Recordset::unlimited);
    // What is refused leaves nothing.
    const std::tuple<const char16_t*, Value, std::optional<Value>> assignments[] = {
        {u"kwota", u"1234,50", Value(1234.5)},
        {u"kwota", u"-0.5", Value(-0.5)},
        {u"kwota", u"1 234,50", {}},
        {u"kwota", u"", {}},
        {u"ile", u"200", Value(std::int64_t{200})},
        {u"kiedy", u"2026-11-21", Value(base::DateTime{2026, 11, 21, 0, 0, 0})},
        {u"kiedy", u"wczoraj", {}},
        {u"dzien", base::DateTime{2026, 11, 21, 8, 15, 30}, Value(u"2026-11-21")},
        {u"opis", u"abc", Value(u"abc")},
        {u"opis", u"abcd", {}},
        {u"opis", std::int64_t{7}, Value(u"7")},
        {u"opis", {}, Value()},
    };
    for (const auto& [column, assigned, stored] : assignments) {
        const std::string what = base::to_utf8(column + (u" = " + text_of(assigned)));
        if (stored) {
            rows->set_field(column, assigned);
            EXPECT_EQ(rows->field(column), *stored) << what;
        } else {
            EXPECT_THROW(rows->set_field(column, assigned), base::AutomationError) << what;
        }
    }
    EXPECT_EQ(connection->execute(u"update t set opis=? where ile=?",
                                  std::vector<Value>{Value(u"x"), Value(std::int64_t{0})}),
              1);
    EXPECT_THROW(connection->execute(u"update t set opis=?"), base::AutomationError);
}

}  // namespace
}  // namespace tavrix::ports
