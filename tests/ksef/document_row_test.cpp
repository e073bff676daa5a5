#include "ksef/rows/document_row.h"

#include <gtest/gtest.h>

#include "base/error.h"
#include "ports/portable/sqlite_database.h"

namespace tavrix::ksef {
namespace {

// The service's free text is of any length; what identifies the invoice is never cut.
TEST(DocumentRow, LongDescriptionIsCutToItsColumnAndANumberIsNot) {
    const auto connection = ports::SqliteConnection::open(":memory:", true);
    connection->execute_script(
        "create table dok_fak (ddout_id integer primary key, ddout_data_wyst datetime,"
        " numer_ksef nvarchar(5), NumerRef_ksef nvarchar(5), HashFaktury char(8),"
        " status_ksef int, StatusStr_ksef nvarchar(4), UPO_ksef nvarchar,"
        " Export_Opis_bledu_ksef nvarchar(2), DATA_OPERACJI datetime);"
        "insert into dok_fak (ddout_id, numer_ksef, HashFaktury) values (1, '', 'h       ')");
    ports::SqliteDatabase database(connection);
    const base::Text table = u"dok_fak";
    DocumentRow row(database, table, 1);
    const base::DateTime now{2026, 11, 21, 10, 0, 0};
    const auto stored = [&] {
        const auto rows = connection->open_recordset(
            u"select numer_ksef+'|'+isnull(StatusStr_ksef,'') as both from dok_fak");
        return ports::text_of(rows->field(u"both"));
    };

    EXPECT_EQ(row.read()->hash, u"h") << "the blanks of a char column are no part of it";
    EXPECT_THROW(row.record({u"R", u"123456", u"h", u"Opis"}, now), base::AutomationError);
    EXPECT_EQ(stored(), u"|");
    row.record({u"R", u"12345", u"h", u"Opis, który jest długi"}, now);
    EXPECT_EQ(stored(), u"12345|Opis");
    row.record({u"R", u"12345", u"h", u"abc\U0001F600"}, now);
    EXPECT_EQ(stored(), u"12345|abc") << "no half of a character";
}

}  // namespace
}  // namespace tavrix::ksef
