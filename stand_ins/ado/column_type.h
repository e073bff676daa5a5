#pragma once

#include "ports/portable/sqlite_column.h"
#include "stand_ins/ado/habits.h"
#include "windows/variant.h"

namespace tavrix::ado {

/// A column as ADO describes it to hosts.
struct ColumnType {
    std::int32_t type;          // DataTypeEnum
    std::int32_t defined_size;  // characters of a text, bytes of anything else
    VARTYPE variant;            // how its values travel; VT_EMPTY: as they are stored
    /// Read and written apart from the others, and never compared.
    bool is_long = false;
};

ColumnType type_of(const ports::SqliteColumn& column, const Habits& habits);

/// A value as the column shows it.
windows::Variant shown(const ports::Value& value, const ports::SqliteColumn& column,
                       const Habits& habits);
/// A value as the column takes it, converted by the user's regional settings. Throws what ADO
/// raises for one that is too long or cannot be converted.
ports::Value taken(const ports::Value& value, const ports::SqliteColumn& column,
                   const Habits& habits);

}  // namespace tavrix::ado
