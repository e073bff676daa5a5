#pragma once

#include "dialogs/chart.h"
#include "ports/host_object.h"

namespace tavrix::dialogs {

// More rows than these are neither read nor drawn: a grid may fetch each of them from a server.
inline constexpr std::int32_t most_chart_rows = 5000;
// More series than these cannot be told apart.
inline constexpr std::size_t most_chart_series = 12;

/// Reads the host's grid: `Rows`, `Cols` and `TextMatrix(row, column)`, and where it has them
/// `FixedRows`, `IsSubtotal(row)`, whose rows are passed over, and `ColHidden(column)`, which
/// leaves a column of `checks` out. Rows may be given last first and reach beyond the grid; both 0
/// mean all below the headings. Headings are those of row 0, where it is not among the rows. Runs
/// the host's code. A grid that cannot be read gives the failure instead, one that stops in the
/// middle what was read until then; throws only when memory runs out.
ChartData read_chart_data(ports::HostObject& grid, const ChartRecord& record);

}  // namespace tavrix::dialogs
