// The library's Database port over ADODB.Connection and ADODB.Recordset, and what it counts on in
// them.

#include <map>

#include "base/error.h"
#include "ports/windows/ado_database.h"
#include "tests/com/host_database.h"

namespace tavrix::test {
namespace {

using windows::LateBound;

constexpr std::int32_t open_static = 3;
constexpr std::int32_t lock_read_only = 1;
constexpr std::int32_t lock_batch_optimistic = 4;

class Ado : public testing::Test {
  protected:
    HostDatabase database;
    LateBound connection = LateBound::create(u"ADODB.Connection");

    void SetUp() override { connection.call(u"Open", u"Data Source=" + database.path()); }

    LateBound open(const char16_t* sql, std::int32_t lock) {
        LateBound rows = LateBound::create(u"ADODB.Recordset");
        rows.call(u"Open", sql, ComPointer<IDispatch>(connection.dispatch()), open_static, lock);
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

TEST_F(Ado, FieldsHaveTheTypesHostsExpect) {
    const LateBound rows = open(u"select top 1 * from dok_fak where ddout_id=1", lock_read_only);
    const std::map<const char16_t*, const char*> fields = {
        {u"DDOUT_ID", "long 1"},   {u"numer_ksef", "null"},
        {u"kwota", "double 12.5"}, {u"opis", "text Zażółć"},
        {u"zaplacona", "bool -1"}, {u"ddout_data_wyst", "date 11/14/2026 10:20:30"}};
    for (const auto& [name, expected] : fields) {
        EXPECT_EQ(written(rows.object(u"Fields", name).get(u"Value").get()), expected);
    }
    EXPECT_EQ(written(rows.object(u"Fields").get(u"Count").get()), "long 6");
    EXPECT_EQ(written(rows.object(u"Fields", 4).get(u"Name").get()), "text opis");
}

TEST_F(Ado, BatchChangesWaitForUpdateBatch) {
    const LateBound rows =
        open(u"select ddout_id, opis, numer_ksef from dok_fak", lock_batch_optimistic);
    rows.object(u"Fields", u"opis").put(u"Value", u"jeden");
    rows.call(u"Update");
    rows.call(u"MoveNext");
    rows.object(u"Fields", u"numer_ksef").put(u"Value", Variant::null());
    rows.call(u"AddNew");
    rows.object(u"Fields", u"ddout_id").put(u"Value", std::int32_t{9});
    EXPECT_EQ(database.stored(u"opis", 1), ports::Value(u"Zażółć"));
    rows.call(u"UpdateBatch");
    EXPECT_EQ(database.stored(u"opis", 1), ports::Value(u"jeden"));
    EXPECT_EQ(database.stored(u"numer_ksef", 2), ports::Value());
    EXPECT_EQ(database.stored(u"ddout_id", 9), ports::Value(std::int64_t{9}));
}

TEST_F(Ado, ThePortReadsAndWritesThroughTheHostsConnection) {
    windows::AdoDatabase port(ComPointer<IDispatch>(connection.dispatch()));
    const auto rows = port.open(u"select top 1 * from dok_fak where ddout_id=1");
    ASSERT_FALSE(rows->at_end());
    EXPECT_EQ(rows->field(u"opis"), ports::Value(u"Zażółć"));
    EXPECT_EQ(rows->field(u"ddout_data_wyst"),
              ports::Value(base::DateTime{2026, 11, 14, 10, 20, 30}));
    EXPECT_EQ(rows->field(u"kwota"), ports::Value(12.5));
    rows->set_field(u"numer_ksef", base::Text(u"K-1"));
    rows->set_field(u"ddout_data_wyst", base::DateTime{2026, 12, 1, 0, 0, 0});
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

}  // namespace
}  // namespace tavrix::test
