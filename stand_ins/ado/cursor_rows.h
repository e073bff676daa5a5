#pragma once

#include "ports/portable/sqlite_database.h"
#include "stand_ins/ado/ado_numbers.h"
#include "stand_ins/ado/habits.h"

namespace tavrix::ado {

/// The rows of a recordset, written as ADO's client cursor engine writes them: found by the table's
/// key where the provider knows one, otherwise by every short column that was read, whichever rows
/// that hits.
class CursorRows final : public ports::SqliteRecordset {
  public:
    CursorRows(const std::shared_ptr<ports::SqliteConnection>& connection, base::TextView sql,
               const Habits& habits);

    /// Which of the values that were read must still be there: update_criteria.
    std::int32_t criteria() const noexcept { return criteria_; }
    void set_criteria(std::int32_t criteria) noexcept { criteria_ = criteria; }
    /// Key columns that the provider reads though the query does not name them.
    std::int32_t hidden_columns() const noexcept { return hidden_columns_; }
    /// As providers tell it: without a key each column is one of the key's.
    bool is_key(std::size_t column) const;

  protected:
    Condition condition_of(const Row& row) const override;
    void check_reached(int count) override;

  private:
    Habits habits_;
    std::vector<base::Text> keys_;
    std::int32_t hidden_columns_ = 0;
    bool found_by_key_ = false;
    std::int32_t criteria_ = update_criteria::changed_columns;
};

}  // namespace tavrix::ado
