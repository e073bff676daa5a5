// What a chart looks like, read from its description and from its pixels.

#include "dialogs/chart_picture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "drawing/picture_text.h"
#include "drawing/pixels.h"

namespace tavrix::dialogs {
namespace {

using base::Text;
using drawing::Picture;

constexpr drawing::Colour first_colour = 0xB27200;

using Values = std::vector<std::optional<double>>;

ChartLook look_of(std::int32_t width_px, std::int32_t height_px) {
    ChartLook look;
    look.width_twips = 15 * width_px;
    look.height_twips = 15 * height_px;
    look.text_width = drawing::caption_width;
    return look;
}

Chart chart_of(ChartKind kind, const std::vector<Values>& series) {
    Chart chart;
    chart.kind = kind;
    chart.options = {true, true, true};
    for (const Values& values : series) {
        chart.data.series.push_back({u"Seria", values, std::vector<Text>(values.size())});
    }
    for (std::size_t i = 0; i < series.at(0).size(); ++i) {
        chart.data.labels.push_back(u"wiersz " + base::to_decimal(static_cast<std::int64_t>(i)));
    }
    chart.data.rows_asked = static_cast<std::int32_t>(chart.data.labels.size());
    return chart;
}

struct Box {
    int top, bottom;
};
std::vector<Box> boxes_of(const Picture& picture, drawing::Colour colour) {
    std::vector<Box> boxes;
    const auto layer = std::ranges::find_if(picture.layers, [&](const drawing::Drawing& each) {
        return each.colour() == colour && each.sizes().size() > 1;
    });
    layer->for_each_polygon([&](std::span<const drawing::PointTwips> points) {
        const auto [top, bottom] = std::ranges::minmax(points, {}, &drawing::PointTwips::y_twips);
        boxes.push_back({top.y_twips, bottom.y_twips});
    });
    return boxes;
}

bool says(const Picture& picture, base::TextView words) {
    Text all;
    for (const drawing::Label& label : picture.labels) all += label.text + u" ";
    return all.find(words) != Text::npos;
}

TEST(ChartPicture, BarsAreAsHighAsTheirValuesAndMissingOnesAreNotThere) {
    const Picture picture = draw_chart(
        chart_of(ChartKind::bars, {{100.0, 50.0, std::nullopt, -25.0, 0.0}}), look_of(800, 500));
    const std::vector<Box> bars = boxes_of(picture, first_colour);
    ASSERT_EQ(bars.size(), 4u);
    const auto height = [&](std::size_t bar) { return bars[bar].bottom - bars[bar].top; };
    constexpr int pixel = 15;
    EXPECT_NEAR(height(1), height(0) / 2.0, pixel);
    EXPECT_NEAR(height(2), height(0) / 4.0, pixel);
    EXPECT_LE(height(3), pixel);
    EXPECT_EQ(bars[0].bottom, bars[2].top) << "one goes up from zero, the other down";
    EXPECT_GT(height(0), 2500) << "most of the picture";
    const std::vector<Box> near = boxes_of(
        draw_chart(chart_of(ChartKind::bars, {{1000.0, 900.0}}), look_of(800, 500)), first_colour);
    EXPECT_NEAR(near[1].bottom - near[1].top, (near[0].bottom - near[0].top) * 0.9, pixel)
        << "bars begin at zero";
}

TEST(ChartPicture, AGapInALineStaysOne) {
    const Chart chart =
        chart_of(ChartKind::lines, {{1.0, 2.0, std::nullopt, 3.0, 4.0, std::nullopt, 5.0}});
    // Two stretches in the line's layer; the last point is a mark alone.
    EXPECT_EQ(boxes_of(draw_chart(chart, look_of(800, 500)), first_colour).size(), 2u);
}

TEST(ChartPicture, PiesMakeAHundredPercentAndRefuseWhatHasNoShare) {
    const auto pie = [](const Values& values) {
        Chart chart = chart_of(ChartKind::pie, {values});
        chart.options.values = false;
        return draw_chart(chart, look_of(800, 500));
    };
    for (const std::size_t count : {3u, 7u, 8u, 30u}) {
        double sum = 0;
        const Picture picture = pie(Values(count, 1.0));
        for (const drawing::Label& label : picture.labels) {
            const std::size_t percent = label.text.find(u"\u00A0%");
            if (percent == Text::npos) continue;
            std::string share =
                base::to_utf8(label.text.substr(label.text.rfind(u' ', percent) + 1));
            std::ranges::replace(share, ',', '.');
            sum += std::stod(share);
        }
        EXPECT_NEAR(sum, 100, 1e-9) << count;
        EXPECT_EQ(says(picture, u"Pozostałe"), count > 7);
    }
    EXPECT_TRUE(says(pie({1.0, -1.0}), u"ujemnych"));
    EXPECT_TRUE(says(pie({0.0, std::nullopt}), u"zero"));
}

TEST(ChartPicture, IsWholeWhateverTheNumbersAndTheSize) {
    const Values odd[] = {
        {5.0, 5.0, 5.0},     {-5.0, -5.0},      {0.0},
        {9e27, -9e27},       {1e-300, 2e-300},  {1e15, 1e15 + 1},
        {std::nullopt, 3.0}, Values(3000, 7.5), {HUGE_VAL, 1e300, std::nan(""), 2.0}};
    for (const Values& values : odd) {
        for (const ChartKind kind : {ChartKind::bars, ChartKind::lines, ChartKind::pie}) {
            for (const auto& [width, height] :
                 {std::pair(1, 1), {170, 170}, {900, 200}, {200, 900}}) {
                Chart chart = chart_of(kind, {values, values});
                chart.title = Text(500, u'W');
                const Picture picture =
                    drawing::with_captions(draw_chart(chart, look_of(width, height)));
                for (const drawing::Drawing& layer : picture.layers) {
                    for (const drawing::PointTwips point : layer.points()) {
                        // A word in the smallest picture is larger than that.
                        if (width < 100) break;
                        ASSERT_TRUE(point.x_twips >= -30 && point.x_twips <= width * 15 + 30 &&
                                    point.y_twips >= -30 && point.y_twips <= height * 15 + 30)
                            << "kind " << static_cast<int>(kind) << ", first value "
                            << values[0].value_or(0) << ", " << width << " x " << height;
                    }
                }
            }
        }
    }
    EXPECT_TRUE(says(draw_chart(chart_of(ChartKind::bars, {{std::nullopt}}), look_of(400, 400)),
                     u"nie ma liczb"));
    EXPECT_TRUE(says(draw_chart(chart_of(ChartKind::bars, {{}}), look_of(400, 400)), u"wierszy"));
    Chart many = chart_of(ChartKind::lines, {Values(10, 1.0)});
    many.data.rows_asked = 12345;
    many.data.hidden_rows = 7;
    EXPECT_TRUE(says(draw_chart(many, look_of(600, 400)),
                     u"Pokazano 10 z 12\u00A0345 wierszy. Pominięte wiersze ukryte w tabeli: 7"));
}

TEST(ChartPicture, BecomesPixelsInItsColours) {
    const drawing::Pixels pixels = drawing::to_pixels(
        draw_chart(chart_of(ChartKind::bars, {{1.0}, {1.0}}), look_of(400, 300)), 2 / 15.0);
    ASSERT_EQ(pixels.width_px, 800);
    int coloured = 0;
    for (std::int32_t x = 0; x < pixels.width_px; ++x)
        coloured += pixels.at(x, 300) == first_colour;
    EXPECT_NEAR(coloured, 255, 60) << "one of two bars on four fifths of the plot";
    EXPECT_EQ(pixels.at(0, 0), 0xFFFFFFu);
}

TEST(ChartPicture, IsSeenAndSoonDrawnWhereRowsAreThinnerThanPixels) {
    Values up_and_down(5000);
    for (std::size_t i = 0; i < up_and_down.size(); ++i) up_and_down[i] = i % 2 == 0 ? 1.0 : -1.0;
    for (const ChartKind kind : {ChartKind::bars, ChartKind::lines}) {
        const Picture picture =
            draw_chart(chart_of(kind, std::vector<Values>(12, up_and_down)), look_of(800, 500));
        std::size_t polygons = 0;
        for (const drawing::Drawing& layer : picture.layers) polygons += layer.sizes().size();
        EXPECT_LT(polygons, 12u * 800 * 4) << static_cast<int>(kind);
        const drawing::Pixels pixels = drawing::to_pixels(picture, 1 / 60.0);
        for (const int y : {50, 88}) EXPECT_EQ(pixels.at(100, y), 0x005ED5u) << y;
    }
}

}  // namespace
}  // namespace tavrix::dialogs
