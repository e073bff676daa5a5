#include "ports/windows/ado_database.h"

#include "windows/failure.h"
#include "windows/variant_value.h"

namespace tavrix::windows {
namespace {

// Numbers of the ADO type library.
constexpr std::int32_t use_client = 3;             // adUseClient
constexpr std::int32_t open_static = 3;            // adOpenStatic
constexpr std::int32_t lock_batch_optimistic = 4;  // adLockBatchOptimistic
constexpr std::int32_t command_text = 1;           // adCmdText
constexpr std::int32_t no_records = 0x80;          // adExecuteNoRecords

class AdoRecordset final : public ports::Recordset {
  public:
    AdoRecordset(const LateBound& connection, base::TextView sql)
        : recordset_(LateBound::create(u"ADODB.Recordset")) {
        // A static cursor of the server cannot be updated; the client's can.
        recordset_.put(u"CursorLocation", use_client);
        recordset_.call(u"Open", sql, ComPointer<IDispatch>(connection.dispatch()), open_static,
                        lock_batch_optimistic, command_text);
        fields_ = recordset_.object(u"Fields");
    }

    ~AdoRecordset() override {
        // Closing refuses a row that is still being edited; releasing the recordset then drops it.
        try {
            recordset_.call(u"Close");
        } catch (...) {
        }
    }

    bool at_end() override { return recordset_.get(u"EOF").get().boolVal != VARIANT_FALSE; }
    void move_next() override { recordset_.call(u"MoveNext"); }
    ports::Value field(base::TextView name) override {
        return value_of(fields_.object(u"Item", name).get(u"Value").get());
    }
    void set_field(base::TextView name, const ports::Value& value) override {
        fields_.object(u"Item", name).put(u"Value", variant_of(value));
    }
    void add_new() override { recordset_.call(u"AddNew"); }
    void update_batch() override { recordset_.call(u"UpdateBatch"); }

  private:
    LateBound recordset_;
    LateBound fields_;
};

}  // namespace

std::unique_ptr<ports::Recordset> AdoDatabase::open(base::TextView sql) {
    if (!connection_) connection_.call(u"Open");
    return std::make_unique<AdoRecordset>(connection_, sql);
}

void AdoDatabase::execute(base::TextView sql) {
    connection_.call(u"Execute", sql, Variant::missing(), command_text | no_records);
}

}  // namespace tavrix::windows
