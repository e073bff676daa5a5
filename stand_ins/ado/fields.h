#pragma once

#include "stand_ins/ado/column_type.h"
#include "stand_ins/ado/recordset.h"

namespace tavrix::ado {

/// One column, whose value is that of the recordset's current row.
class Field {
  public:
    Field(std::shared_ptr<Recordset> rows, std::size_t column)
        : rows_(std::move(rows)), column_(column) {}
    windows::Variant value() { return rows_->value(column_); }
    void set_value(const ports::Value& value) { rows_->set_value(column_, value); }
    base::Text name();
    std::int32_t type();
    std::int32_t defined_size();
    windows::ComPointer<IDispatch> properties();

  private:
    ColumnType described();

    std::shared_ptr<Recordset> rows_;
    std::size_t column_;
};

/// The columns of a recordset, by name or by number from 0.
class Fields {
  public:
    explicit Fields(std::shared_ptr<Recordset> rows) : rows_(std::move(rows)) {}
    std::int32_t count();
    windows::ComPointer<IDispatch> item(const ports::Value& index);
    windows::ComPointer<IUnknown> enumerate();

  private:
    std::shared_ptr<Recordset> rows_;
};

extern const com::ClassTable field_class;
extern const com::ClassTable fields_class;

}  // namespace tavrix::ado
