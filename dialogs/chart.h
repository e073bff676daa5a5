#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "base/text.h"

namespace tavrix::dialogs {

/// What a host asks of the chart window.
struct ChartRecord {
    bool full_screen = false;
    /// The grid's column with the values.
    std::int32_t column = 0;
    /// What the labels are: the heading under the axis. Where the grid has no label column, each
    /// row's label is this and the row's number.
    base::Text text = {};
    /// The first and the last row, and the column with the labels.
    std::int32_t x1 = 0;
    std::int32_t x2 = 0;
    std::int32_t x3 = 0;
    base::Text title = {};
    /// `słupkowy`, `liniowy` or `kołowy`.
    base::Text kind = {};
    /// "1" or "0" for each of the grid's columns from the first on: which are drawn beside
    /// `column`.
    base::Text checks = {};
    /// The sum of the numbers of ChartOptions.
    std::int16_t options = 0;
};

enum class ChartKind { bars, lines, pie };

/// The kind by its Polish name, case-blind, with or without diacritics; bars for any other text.
ChartKind chart_kind(base::TextView name);

/// What is drawn beside the values themselves.
struct ChartOptions {
    bool legend = false;  ///< 1
    bool values = false;  ///< 2: the numbers, where there is room
    bool grid = false;    ///< 4: lines across at each step of the axis
};

/// Numbers without a meaning are passed over; 8 once gave bars a depth.
ChartOptions chart_options(std::int16_t flags) noexcept;

/// A column of the grid, row by row: the number, and what the grid shows.
struct ChartSeries {
    base::Text name;
    std::vector<std::optional<double>> values;
    std::vector<base::Text> texts;
};

struct ChartData {
    base::Text label_heading;
    std::vector<base::Text> labels;
    std::vector<ChartSeries> series;
    /// How many rows were asked for; more than there are labels when they were too many.
    std::int32_t rows_asked = 0;
    /// Rows among them that the grid hides from its user; they are not in `rows_asked`.
    std::int32_t hidden_rows = 0;
    /// Why there is nothing, for the user; empty when the grid was read.
    base::Text failure;
};

/// What the chart window shows.
struct Chart {
    base::Text title;
    ChartKind kind = ChartKind::bars;
    ChartOptions options;
    bool full_screen = false;
    ChartData data;
};

/// A host's text without line ends, tabs and the like: a blank for each of them.
base::Text on_one_line(base::Text text);

/// The numbers as a table, its headings first.
std::vector<std::vector<base::Text>> chart_table(const ChartData& data);

/// The table as spreadsheets take it: cells apart by tabs, rows by CR LF. A cell with a quote,
/// a tab or a line end is quoted; an apostrophe keeps texts from being taken for formulas.
base::Text tab_separated(const std::vector<std::vector<base::Text>>& table);

/// What a chart is, for somebody who does not see it: kind, rows, each series with its smallest and
/// largest value.
base::Text chart_in_words(const Chart& chart);

}  // namespace tavrix::dialogs
