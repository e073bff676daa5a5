#pragma once

#include <optional>
#include <set>
#include <vector>

#include "base/error.h"
#include "ports/host_object.h"

namespace tavrix::test {

/// A host's grid, as obliging or as broken as a test wants it.
class FakeGrid final : public ports::HostObject {
  public:
    explicit FakeGrid(std::vector<std::vector<base::Text>> its_cells = {})
        : cells(std::move(its_cells)) {
        if (!cells.empty()) rows = static_cast<std::int64_t>(cells.size());
    }

    base::Value get(const char16_t* name, std::span<const std::int32_t> arguments) override {
        const base::TextView member = name;
        if (member == u"Rows" && rows) return *rows;
        if (member == u"Cols" && !cells.empty()) return static_cast<std::int64_t>(cells[0].size());
        if (member == u"TextMatrix" && is_matrix_there) return cell(arguments[0], arguments[1]);
        if (member == u"IsSubtotal") {
            ++asked_for_subtotals;
            if (!subtotals.empty()) return subtotals.contains(arguments[0]);
        }
        if (member == u"ColHidden" && hidden_column) return arguments[0] == *hidden_column;
        if (member == u"RowHidden" && hidden_row) return arguments[0] == *hidden_row;
        if (member == u"RowHeight" && flat_row) {
            return std::int64_t{arguments[0] == *flat_row ? 0 : 240};
        }
        refuse(u"brak " + base::Text(member));
    }

    std::vector<std::vector<base::Text>> cells;
    std::optional<base::Value> rows;
    std::set<std::int32_t> subtotals;
    std::optional<std::int32_t> hidden_column;
    std::optional<std::int32_t> hidden_row;
    std::optional<std::int32_t> flat_row;
    std::optional<std::int32_t> refused_column;
    bool is_matrix_there = true;
    bool repeats_last_row = false;
    int asked_for_subtotals = 0;

  private:
    [[noreturn]] static void refuse(const base::Text& why) {
        throw base::AutomationError(base::ErrorNumber::component_failed, u"grid", why);
    }
    base::Value cell(std::int32_t row, std::int32_t column) const {
        if (column == refused_column && row == 1) refuse(u"Type mismatch");
        auto place = static_cast<std::size_t>(row);
        if (repeats_last_row) place = std::min(place, cells.size() - 1);
        if (place >= cells.size()) refuse(u"Subscript out of range");
        return cells[place].at(static_cast<std::size_t>(column));
    }
};

}  // namespace tavrix::test
