#pragma once

#include <vector>

#include "com/class_table.h"
#include "ports/database.h"
#include "stand_ins/ado/ado_numbers.h"

namespace tavrix::ado {

/// One entry of Connection.Errors.
class Error {
  public:
    explicit Error(const base::AutomationError& error) : error_(error) {}
    std::int32_t number() const { return static_cast<std::int32_t>(error_.number()); }
    base::Text description() const { return error_.description(); }
    base::Text source() const { return error_.source(); }
    /// The five characters of SQL-92: "42S02" for a missing table, "HY000" for what has no code of
    /// its own.
    base::Text sql_state() const;
    std::int32_t native_error() const { return 0; }

  private:
    base::AutomationError error_;
};

/// What the last operation of a connection, or of a recordset on it, reported.
class Errors {
  public:
    std::int32_t count() const { return static_cast<std::int32_t>(errors_.size()); }
    windows::ComPointer<IDispatch> item(std::int32_t index) const;
    windows::ComPointer<IUnknown> enumerate() const;
    void clear() { errors_.clear(); }
    void record(const base::AutomationError& error) {
        errors_.assign(1, std::make_shared<Error>(error));
    }

  private:
    std::vector<std::shared_ptr<Error>> errors_;
};

extern const com::ClassTable error_class;
extern const com::ClassTable errors_class;

}  // namespace tavrix::ado
