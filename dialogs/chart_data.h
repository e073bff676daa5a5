#pragma once

#include "dialogs/chart.h"
#include "ports/host_object.h"

namespace tavrix::dialogs {

// More rows than these are neither read nor drawn: a grid may fetch each of them from a server.
inline constexpr std::int32_t most_chart_rows = 5000;
// More series than these cannot be told apart.
inline constexpr std::size_t most_chart_series = 12;

/// Reads the host's grid: `Rows`, `Cols` and `TextMatrix(row, column)`, and where it has them
/// `FixedRows`, `IsSubtotal(row)`, `RowHidden(row)` and `RowHeight(row)` of 0, whose rows are
/// passed over, and `ColHidden(column)` and `ColWidth(column)` of 0, which leave a column of
/// `checks` out. Rows may be given last first and reach beyond the grid; both 0
/// mean all below the headings. Headings are those of row 0, where it is not among the rows. Runs
/// the host's code. A cell that the grid refuses is a missing one; after several rows of them, or
/// at a subscript's error, the grid has ended. One that cannot be read at all gives the failure
/// instead. Throws nothing of the grid's.
ChartData read_chart_data(ports::HostObject& grid, const ChartRecord& record);

}  // namespace tavrix::dialogs
