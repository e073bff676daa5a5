#include "stand_ins/ado/cursor_rows.h"

#include <algorithm>

#include "ports/portable/sqlite_statement.h"
#include "stand_ins/ado/column_type.h"

namespace tavrix::ado {
namespace {

constexpr base::TextView rows_source = u"ADODB.Recordset";

std::vector<base::Text> texts_of(const ports::SqliteConnection& connection, const std::string& sql,
                                 const base::Text& argument) {
    ports::SqliteStatement statement(connection.handle(), sql);
    statement.bind(1, argument);
    std::vector<base::Text> texts;
    while (statement.step()) texts.push_back(ports::text_of(statement.column(0)));
    return texts;
}

// The columns of the primary key, or of a unique index; none when the table has neither.
std::vector<base::Text> key_of(const ports::SqliteConnection& connection,
                               const std::string& utf8_table) {
    const base::Text table = base::from_utf8(utf8_table);
    auto keys = texts_of(connection, "select name from pragma_table_info(?) where pk > 0", table);
    if (!keys.empty()) return keys;
    const auto indexes =
        texts_of(connection, "select name from pragma_index_list(?) where \"unique\"", table);
    if (indexes.empty()) return {};
    return texts_of(connection, "select name from pragma_index_info(?)", indexes.front());
}

// A time that is compared to more digits than it has never equals itself.
ports::Value compared(const ports::Value& original, bool exact_times, ports::ColumnKind kind) {
    const auto* text = std::get_if<base::Text>(&original);
    const bool has_fraction =
        text != nullptr && kind == ports::ColumnKind::date && text->find(u'.') != base::Text::npos;
    return exact_times && has_fraction ? ports::Value(*text + u"3333") : original;
}

}  // namespace

CursorRows::CursorRows(const std::shared_ptr<ports::SqliteConnection>& connection,
                       base::TextView sql, const Habits& habits)
    : SqliteRecordset(connection, sql), habits_(habits) {
    if (table().empty()) return;
    keys_ = key_of(*connection, table());
    const auto visible = std::ranges::count_if(keys_, [&](const base::Text& key) {
        return std::ranges::any_of(columns(), [&](const ports::SqliteColumn& column) {
            return base::equal_case_blind(column.name, key);
        });
    });
    const auto hidden =
        static_cast<std::int32_t>(keys_.size()) - static_cast<std::int32_t>(visible);
    found_by_key_ = !keys_.empty() && (hidden == 0 || habits_.hidden_keys);
    hidden_columns_ = habits_.hidden_keys ? hidden : 0;
}

bool CursorRows::is_key(std::size_t column) const {
    return !found_by_key_ || std::ranges::any_of(keys_, [&](const base::Text& key) {
        return base::equal_case_blind(columns().at(column).name, key);
    });
}

ports::SqliteRecordset::Condition CursorRows::condition_of(const Row& row) const {
    Condition condition = found_by_key_ ? SqliteRecordset::condition_of(row) : Condition{"1=1", {}};
    for (std::size_t i = 0; i < columns().size(); ++i) {
        const bool is_compared =
            !found_by_key_ || criteria_ == update_criteria::all_columns ||
            (criteria_ == update_criteria::changed_columns && row.changed[i].has_value());
        if (!is_compared || type_of(columns()[i], habits_).is_long) continue;
        condition.sql += " and \"" + base::to_utf8(columns()[i].name) + "\" is ?";
        condition.values.push_back(
            compared(row.original[i], habits_.compares_exact_times, columns()[i].kind));
    }
    return condition;
}

void CursorRows::check_reached(int count) {
    // The update stands; only the news of it is wrong.
    SqliteRecordset::check_reached(habits_.row_count == RowCount::none ? 0 : count);
    if (count > 1) {
        raise(AdoError::unspecified, rows_source,
              u"Key column information is insufficient or incorrect. Too many rows were affected "
              u"by update.");
    }
}

}  // namespace tavrix::ado
