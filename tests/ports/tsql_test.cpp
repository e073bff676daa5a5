#include <gtest/gtest.h>

#include "base/error.h"
#include "ports/portable/sqlite_database.h"
#include "ports/portable/tsql/translate.h"

namespace tavrix::ports {
namespace {

using base::Text;

std::string sqlite_of(std::string_view sql) {
    return tsql::translate(sql).sql;
}

TEST(TsqlTranslation, PutsTopBehindTheSelectItBelongsTo) {
    EXPECT_EQ(sqlite_of("select top 1 a, b from t where id=5"),
              R"(select rowid, "a" , "b" from "t" where "id" = 5 limit 1)");
    EXPECT_EQ(sqlite_of("SELECT count(*) FROM t"), R"(select count ( * ) from "t")");
    EXPECT_EQ(sqlite_of("select distinct top (3) a from dbo.[t x] with (nolock) order by a desc;"),
              R"(select distinct "a" from "t x" order by "a" desc limit 3)");
}

TEST(TsqlTranslation, RefusesWhatItDoesNotKnowAndSaysWhere) {
    constexpr std::pair<const char*, const char*> refused[] = {
        {"drop table t", "byte 0"},
        {"select a from t; delete from t", "byte 15"},
        {"select a from t where id=@id", "byte 25"},
        {"select top 5 percent a from t", "byte 13"},
        {"select top x a from t", "byte 7"},
        {"select convert(varchar(10), d, 120) from t", "byte 7"},
        {"select a from t cross apply f(a)", "byte 16"},
        {"select a from t where a='never closed", "byte 24"},
        {"select (a from t", "byte 7"},
        {"select a) from t", "byte 8"},
        {"select charindex('x') from t", "byte 7"},
        {"select stuff(a,1,1,'') from t", "byte 7"},
        {"select a from t where a=?", "byte 24"},
        {"exec sp_help", "byte 0"},
        {"", "byte 0"},
    };
    for (const auto& [sql, place] : refused) {
        try {
            tsql::translate(sql);
            ADD_FAILURE() << "taken: " << sql;
        } catch (const base::AutomationError& error) {
            EXPECT_NE(std::string(error.what()).find(place), std::string::npos)
                << sql << " -> " << error.what();
        }
    }
}

class Tsql : public testing::Test {
  protected:
    void SetUp() override {
        connection_->execute_script(
            "create table kontrahenci (konh_id integer primary key, konh_nip nvarchar(20), "
            "kartotekakh nvarchar(20),"
            " konh_activ bit, limitk decimal(10,2), zalozony datetime);"
            "create table Kontrahenci_parametry (konh_id integer, czy_eksf bit);"
            "insert into kontrahenci values (1,'526-587-76-35','KD001',1,10.5,'2026-11-20');"
            "insert into kontrahenci values (2,'111 222 33 44','ko002',0,null,null);"
            "insert into Kontrahenci_parametry values (1,1);");
    }

    Text value(Text expression) {
        const auto rows = connection_->open_recordset(u"select " + expression +
                                                      u" as v from kontrahenci where konh_id=1");
        return text_of(rows->field(u"V"));
    }

    std::shared_ptr<SqliteConnection> connection_ = SqliteConnection::open(":memory:", true);
};

TEST_F(Tsql, FunctionsMeanWhatSqlServerMeans) {
    const std::pair<const char16_t*, const char16_t*> expected[] = {
        {u"charindex('D0', kartotekakh)", u"2"},
        {u"charindex('d0', kartotekakh)", u"2"},
        {u"charindex('', kartotekakh)", u"0"},
        {u"charindex('0', kartotekakh, 4)", u"4"},
        {u"substring(kartotekakh, 1, 2)", u"KD"},
        {u"substring(kartotekakh, 0, 2)", u"K"},
        {u"substring(kartotekakh, 4, 100)", u"01"},
        {u"substring(kartotekakh, 9, 1)", u""},
        {u"left(kartotekakh, 2)+'/'+right(kartotekakh, 3)", u"KD/001"},
        {u"replace(replace(konh_nip,'-',''),'5265','x')", u"x877635"},
        {u"replace('ŻÓŁW','żó','a')", u"aŁW"},
        {u"upper('zażółć')", u"ZAŻÓŁĆ"},
        {u"len('ab  ')", u"2"},
        {u"isnull(null, N'brak')", u"brak"},
        {u"konh_id+1", u"2"},
        {u"'it''s'", u"it's"},
    };
    for (const auto& [expression, result] : expected) {
        EXPECT_EQ(value(expression), result) << base::to_utf8(expression);
    }
    EXPECT_THROW(value(u"\"no such column\""), base::AutomationError)
        << "a missing column must not read as a text";
}

TEST_F(Tsql, NestedTopAndCorrelatedQuery) {
    const auto rows = connection_->open_recordset(
        u"select top 1 konh_id,(select top 1 1 from Kontrahenci_parametry where "
        u"Kontrahenci_parametry.konh_id=kontrahenci.konh_id and czy_eksf<>0) as czy_eksf from "
        u"kontrahenci where "
        u"substring(kartotekakh,1,2)='KD' and konh_activ<>0 and "
        u"replace(replace(konh_nip,'-',''),' ','')='5265877635'");
    ASSERT_FALSE(rows->at_end());
    EXPECT_EQ(text_of(rows->field(u"konh_id")), u"1");
    EXPECT_EQ(text_of(rows->field(u"CZY_EKSF")), u"1");
}

TEST_F(Tsql, ColumnsHaveTheTypesTheyWereDeclaredWith) {
    const auto rows =
        connection_->open_recordset(u"select konh_activ,limitk,zalozony,konh_nip from kontrahenci");
    EXPECT_EQ(rows->field(u"konh_activ"), Value(true));
    EXPECT_EQ(rows->field(u"limitk"), Value(10.5));
    EXPECT_EQ(rows->field(u"zalozony"), Value(base::DateTime{2026, 11, 20}));
    rows->move_next();
    EXPECT_EQ(rows->field(u"zalozony"), Value());
    EXPECT_THROW(rows->field(u"nie_ma"), base::AutomationError);
}

TEST_F(Tsql, BatchIsWrittenWholeOrNotAtAll) {
    const auto rows = connection_->open_recordset(u"select konh_nip,zalozony from kontrahenci");
    rows->set_field(u"KONH_NIP", Text(u"o'brien"));
    rows->set_field(u"zalozony", base::DateTime{2026, 11, 21, 8, 15, 30});
    rows->move_next();
    rows->set_field(u"konh_nip", Text(u"drugi"));
    EXPECT_EQ(value(u"konh_nip"), u"526-587-76-35") << "nothing is written before the batch";
    connection_->execute(u"delete from kontrahenci where konh_id=2");
    EXPECT_THROW(rows->update_batch(), base::AutomationError);
    EXPECT_EQ(value(u"konh_nip"), u"526-587-76-35")
        << "the first row's change went with the second's failure";

    const auto again =
        connection_->open_recordset(u"select top 1 konh_nip,zalozony from kontrahenci");
    again->set_field(u"zalozony", base::DateTime{2026, 11, 21, 8, 15, 30});
    again->update_batch();
    again->set_field(u"zalozony", base::DateTime{2026, 11, 22});
    again->update_batch();
    EXPECT_EQ(value(u"zalozony"), u"2026-11-22");
}

TEST_F(Tsql, RowChangedByAnotherIsNotOverwritten) {
    const auto rows = connection_->open_recordset(u"select top 1 konh_nip,limitk from kontrahenci");
    rows->set_field(u"konh_nip", Text(u"nowy"));
    connection_->execute(u"update kontrahenci set konh_nip='inny' where konh_id=1");
    try {
        rows->update_batch();
        FAIL();
    } catch (const base::AutomationError& error) {
        EXPECT_EQ(error.number(), base::ErrorNumber::row_changed);
    }
}

TEST_F(Tsql, AddsRows) {
    const auto rows =
        connection_->open_recordset(u"select konh_id,konh_nip from kontrahenci where konh_id=7");
    ASSERT_TRUE(rows->at_end());
    rows->add_new();
    rows->set_field(u"konh_id", std::int64_t{7});
    rows->set_field(u"konh_nip", Text(u"777"));
    rows->update_batch();
    const auto read =
        connection_->open_recordset(u"select konh_nip from kontrahenci where konh_id=7");
    EXPECT_EQ(text_of(read->field(u"konh_nip")), u"777");
    try {
        connection_->open_recordset(u"select * from nie_ma");
        FAIL();
    } catch (const base::AutomationError& error) {
        EXPECT_EQ(error.number(), base::ErrorNumber::table_not_found);
    }
}

}  // namespace
}  // namespace tavrix::ports
