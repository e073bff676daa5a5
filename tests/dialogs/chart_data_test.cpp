// What becomes of a host's grid: cells as numbers, rows and columns as series, axes.

#include "dialogs/chart_data.h"

#include <gtest/gtest.h>

#include "dialogs/chart_axis.h"
#include "dialogs/grid_numbers.h"
#include "tests/support/fake_grid.h"

namespace tavrix::dialogs {
namespace {

using base::Text;
using test::FakeGrid;

TEST(GridNumbers, AreReadAsPolesWriteThem) {
    const std::pair<base::TextView, std::optional<double>> cases[] = {
        {u"1234,56", 1234.56},
        {u" 1\u00A0234\u00A0567,50 zł", 1234567.5},
        {u"1\u202F234", 1234},
        {u"1.234.567", 1234567},
        {u"1.234,5", 1234.5},
        {u"1,234.5", 1234.5},
        {u"1'000'000", 1e6},
        {u"12,5 %", 12.5},
        {u"1.234", 1.234},
        {u",5", 0.5},
        {u"-0,5", -0.5},
        {u"\u2212 7", -7},
        {u"7-", -7},
        {u"(1 200,00) PLN", -1200},
        {u"-5 zł", -5},
        {u"$ -5", -5},
        {u"12,50 zł.", 12.5},
        {u"£ 1,5E+15", 1.5e15},
        {u"-2E-05", -2e-5},
        {u"9E+30", {}},
        {u"9999999999999999999999999999", {}},
        {u"", {}},
        {u"-", {}},
        {u"–", {}},
        {u"zł", {}},
        {u"brak", {}},
        {u"14.11.2026", {}},
        {u"2026-11-14", {}},
        {u"12 szt.", {}},
        {u"12 34", {}},
        {u"1,5.2", {}},
        {u"1 234 56", {}},
        {u"--5", {}},
        {u"1e5", {}},
        {u"nan", {}},
        {u",", {}}};
    for (const auto& [text, number] : cases) {
        EXPECT_EQ(number_of(text), number) << base::to_utf8(text);
    }
    EXPECT_EQ(number_of(base::Value(std::numeric_limits<double>::infinity())), std::nullopt);
    EXPECT_EQ(number_of(base::Value()), std::nullopt) << "missing is not zero";
}

TEST(ChartAxisTest, HasRoundTicksAroundWhatItHolds) {
    struct Case {
        double low, high;
        base::TextView labels;
    };
    const Case cases[] = {{0, 100, u"0|20|40|60|80|100|"},
                          {0, 0, u"0,0|0,2|0,4|0,6|0,8|1,0|"},
                          {-0.3, 0.3, u"-0,3|-0,2|-0,1|0,0|0,1|0,2|0,3|"},
                          {5, 5, u"4,4|4,6|4,8|5,0|5,2|5,4|5,6|"},
                          {0, 12345, u"0|5\u00A0000|10\u00A0000|15\u00A0000|"},
                          {0, 3.1e7, u"0|10|20|30|40|"},
                          {-9e27, 9e27, u"-1,00E+19|-5,00E+18|0|5,00E+18|1,00E+19|"}};
    for (const auto& [low, high, labels] : cases) {
        const ChartAxis axis = make_axis(low, high, 6);
        Text seen;
        for (std::int64_t tick = axis.first; tick <= axis.last; ++tick) {
            seen += axis.label(tick) + u"|";
        }
        EXPECT_EQ(base::to_utf8(seen), base::to_utf8(labels));
        EXPECT_LE(axis.low(), low);
        EXPECT_GE(axis.high(), high);
    }
}

Text told(const ChartData& data) {
    if (!data.failure.empty()) return data.failure;
    Text text;
    for (const auto& row : chart_table(data)) {
        for (const Text& cell : row) text += cell + u"|";
        text += u"/";
    }
    return text;
}

TEST(ChartDataTest, TakesTheRowsAndColumnsThatTheHostAskedFor) {
    FakeGrid grid{{{u"Miesiąc", u"Kwota", u"Ile", u"Uwagi"},
                   {u"I", u"1 000,5", u"3", u"pilne"},
                   {u"II", u"", u"4", u"5"},
                   {u"Razem", u"1 000,5", u"7", u"12"},
                   {u"III", u"-2", u"8", u"6"}}};
    grid.subtotals = {3};
    const auto read = [&](const ChartRecord& record) {
        return base::to_utf8(told(read_chart_data(grid, record)));
    };
    const std::string all = "Miesiąc|Kwota|/I|1 000,5|/II||/III|-2|/";
    EXPECT_EQ(read({.column = 1}), all);
    EXPECT_EQ(read({.column = 1, .x1 = 2'000'000'000, .x2 = -2'000'000'000}),
              "|Kolumna 2|/Miesiąc|Kwota|/I|1 000,5|/II||/III|-2|/");
    EXPECT_EQ(read({.column = 1, .x1 = 4, .x2 = 2}), "Miesiąc|Kwota|/II||/III|-2|/");
    EXPECT_EQ(read({.column = 1, .text = u"Wiersz", .x1 = 1, .x2 = 2, .x3 = -1, .checks = u"001"}),
              "Wiersz|Kwota|Ile|/Wiersz 1|1 000,5|3|/Wiersz 2||4|/");
    grid.hidden_column = 2;
    EXPECT_EQ(read({.column = 9, .x1 = 1, .x2 = 1, .checks = u"11111111"}),
              "Miesiąc|Kwota|Uwagi|/I|1 000,5|pilne|/");
    EXPECT_EQ(read({.column = 9}), "Wskazanej kolumny nie ma w tabeli.");
    grid.refused_column = 1;
    EXPECT_EQ(read({.column = 1}), "Miesiąc|Kwota|/I||/II||/III|-2|/") << "one cell refuses";
    grid.hidden_row = 1;
    grid.flat_row = 2;
    EXPECT_EQ(read({.column = 1}), "Miesiąc|Kwota|/III|-2|/");
    EXPECT_EQ(read_chart_data(grid, {.column = 1}).hidden_rows, 2);
    grid.hidden_row = grid.flat_row = 0;
    const ChartData data = read_chart_data(grid, {.column = 3, .x1 = 1, .x2 = 2});
    EXPECT_EQ(data.series[0].values, (std::vector<std::optional<double>>{std::nullopt, 5.0}));
}

TEST(ChartDataTest, BearsWhateverGridItIsGiven) {
    FakeGrid no_rows{{{u"a", u"b"}}};
    EXPECT_EQ(told(read_chart_data(no_rows, {.column = 1})), u"a|b|/");
    FakeGrid nothing;
    EXPECT_TRUE(read_chart_data(nothing, {.column = 1}).failure.starts_with(u"Nie można"));
    FakeGrid of_texts{{{u"a", u"b"}, {u"c", u"d"}}};
    of_texts.is_matrix_there = false;
    EXPECT_EQ(told(read_chart_data(of_texts, {.column = 1})),
              u"Nie można odczytać tabeli programu: brak TextMatrix");
    of_texts.rows = base::Value(Text(u"dużo"));
    EXPECT_TRUE(read_chart_data(of_texts, {.column = 1}).failure.starts_with(u"Nie można"));

    FakeGrid endless{{{u"a", u"b"}, {u"c", u"1"}, {u"d", u"2"}}};
    endless.rows = base::Value(1e20);
    const ChartData cut = read_chart_data(endless, {.column = 1});
    EXPECT_EQ(told(cut), u"a|b|/c|1|/d|2|/") << "it ended where it refused";
    EXPECT_GT(cut.rows_asked, most_chart_rows);
    endless.repeats_last_row = true;
    const ChartData many = read_chart_data(endless, {.column = 1});
    EXPECT_EQ(many.labels.size(), static_cast<std::size_t>(most_chart_rows));
    EXPECT_EQ(endless.asked_for_subtotals, 2) << "once for each grid's reading";
}

TEST(ChartDataTest, IsCopiedAsASpreadsheetTakesIt) {
    FakeGrid grid{{{u"a\tb", u"c"}, {u"d\r\ne", u"1"}}};
    EXPECT_EQ(tab_separated(chart_table(read_chart_data(grid, {.column = 1}))),
              u"a b\tc\r\nd  e\t1\r\n");
    EXPECT_EQ(tab_separated({{}, {u"=A1", u"+5", u"@x"}, {u"18\" \"b\"", u"\"=c\td\""}}),
              u"\r\n'=A1\t+5\t'@x\r\n\"18\"\" \"\"b\"\"\"\t\"\"\"=c\td\"\"\"\r\n");
    EXPECT_EQ(chart_kind(u" LINIOWY"), ChartKind::lines);
    EXPECT_EQ(chart_kind(u"Kołowy"), ChartKind::pie);
    EXPECT_EQ(chart_kind(u"KOLOWY"), ChartKind::pie);
    EXPECT_EQ(chart_kind(u"kolumnowy"), ChartKind::bars);
}

}  // namespace
}  // namespace tavrix::dialogs
