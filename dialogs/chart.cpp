#include "dialogs/chart.h"

#include <algorithm>

#include "dialogs/chart_axis.h"
#include "dialogs/grid_numbers.h"

namespace tavrix::dialogs {
namespace {

using base::Text;
using base::TextView;

Text without_diacritics(TextView text) {
    constexpr TextView polish = u"ąćęłńóśźż";
    constexpr TextView plain = u"acelnoszz";
    Text result;
    for (const char16_t character : text) {
        const char16_t small = base::lower(character);
        const std::size_t place = polish.find(small);
        result += place == TextView::npos ? small : plain[place];
    }
    return result;
}

Text words_of(const ChartSeries& series) {
    std::optional<double> smallest;
    std::optional<double> largest;
    for (const std::optional<double>& value : series.values) {
        if (!value) continue;
        smallest = std::min(*value, smallest.value_or(*value));
        largest = std::max(*value, largest.value_or(*value));
    }
    if (!smallest) return series.name + u": bez liczb.";
    return series.name + u": od " + short_number(*smallest) + u" do " + short_number(*largest) +
           u".";
}

/// As a spreadsheet takes it for what it is: not for a formula, nor for several cells.
Text spreadsheet_cell(const Text& text, bool is_label) {
    const bool is_formula = !text.empty() && TextView(u"=+@").find(text[0]) != TextView::npos &&
                            (is_label || !number_of(TextView(text)));
    Text cell = is_formula ? u"'" + text : text;
    if (cell.find_first_of(u"\"\t\r\n") == Text::npos) return cell;
    Text quoted = u"\"";
    for (const char16_t character : cell) quoted.append(character == u'"' ? 2 : 1, character);
    return quoted + u"\"";
}

}  // namespace

ChartKind chart_kind(TextView name) {
    const Text plain = without_diacritics(base::trim(name));
    if (plain.starts_with(u"liniow")) return ChartKind::lines;
    if (plain.starts_with(u"kolow")) return ChartKind::pie;
    return ChartKind::bars;
}

ChartOptions chart_options(std::int16_t flags) noexcept {
    return {(flags & 1) != 0, (flags & 2) != 0, (flags & 4) != 0};
}

Text on_one_line(Text text) {
    for (char16_t& character : text) {
        if (character < u' ') character = u' ';
    }
    return text;
}

std::vector<std::vector<Text>> chart_table(const ChartData& data) {
    std::vector<std::vector<Text>> table(data.labels.size() + 1);
    table[0].push_back(data.label_heading);
    for (const ChartSeries& series : data.series) table[0].push_back(series.name);
    for (std::size_t row = 0; row < data.labels.size(); ++row) {
        table[row + 1].push_back(data.labels[row]);
        for (const ChartSeries& series : data.series) table[row + 1].push_back(series.texts[row]);
    }
    return table;
}

Text tab_separated(const std::vector<std::vector<Text>>& table) {
    Text text;
    for (const std::vector<Text>& row : table) {
        for (std::size_t column = 0; column < row.size(); ++column) {
            if (column > 0) text += u'\t';
            text += spreadsheet_cell(row[column], column == 0);
        }
        text.append(u"\r\n");
    }
    return text;
}

Text chart_in_words(const Chart& chart) {
    constexpr TextView kinds[] = {u"Wykres słupkowy", u"Wykres liniowy", u"Wykres kołowy"};
    if (!chart.data.failure.empty()) return chart.data.failure;
    Text words(kinds[static_cast<std::size_t>(chart.kind)]);
    words.append(u", wiersze: ")
        .append(base::to_decimal(static_cast<std::int64_t>(chart.data.labels.size())))
        .append(u".");
    for (const ChartSeries& series : chart.data.series) words.append(u" ").append(words_of(series));
    return words;
}

}  // namespace tavrix::dialogs
