#pragma once

#include "dialogs/chart_picture.h"
#include "drawing/shapes.h"

namespace tavrix::dialogs {

/// Where something of the chart goes, in twips.
struct ChartArea {
    double left = 0;
    double top = 0;
    double right = 0;
    double bottom = 0;
    double width() const noexcept { return right - left; }
    double height() const noexcept { return bottom - top; }
};

/// A picture being drawn in one look, and what all charts share: text that fits, the colours and
/// patterns of series.
class ChartCanvas {
  public:
    explicit ChartCanvas(const ChartLook& look) : look_(look) {
        picture_.width_twips = look.width_twips;
        picture_.height_twips = look.height_twips;
        picture_.paper = look.paper;
    }

    double em() const noexcept { return look_.em_twips; }
    double line_height() const noexcept { return look_.em_twips * 1.4; }
    double gap() const noexcept { return look_.em_twips / 2; }
    double pixel() const noexcept { return look_.pixel_twips; }
    /// The nearest whole pixel.
    double snapped(double twips) const noexcept;
    drawing::Colour ink() const noexcept { return look_.ink; }
    /// Between the paper (0) and the ink (1).
    drawing::Colour shade(double share) const noexcept;
    drawing::Drawing& add_layer(drawing::Colour colour) { return picture_.add_layer(colour); }

    double width_of(base::TextView text) const { return look_.text_width(text, em(), false); }
    /// The text, or as much of it as is not wider, and "…".
    base::Text cut(base::TextView text, double width_twips, bool bold = false) const;
    void write(base::Text text, drawing::Place place,
               drawing::Alignment alignment = drawing::Alignment::left, int angle_degrees = 0);
    void write_title(base::TextView text, const ChartArea& area);
    /// Says in the middle of the area why there is no chart, in as many lines as it takes.
    void explain(base::TextView sentence, const ChartArea& area);

    drawing::Colour series_colour(std::size_t series) const noexcept;
    /// One area after another in a series' colour and pattern, with an edge where it is not a
    /// sliver.
    void fill(const std::vector<drawing::Outline>& outlines, std::size_t series, bool has_edges);
    void draw_series_line(const std::vector<drawing::Outline>& paths, std::size_t series,
                          bool has_dashes);
    void mark(const std::vector<drawing::Place>& places, std::size_t series);
    /// What stands for a series in a legend: a line with its mark, or a filled square.
    void draw_key(drawing::Place middle, std::size_t series, bool as_line);
    double key_width() const noexcept { return 2 * em(); }

    drawing::Picture take() { return std::move(picture_); }

  private:
    const ChartLook& look_;
    drawing::Picture picture_;
};

/// Bars or lines with their axes.
void draw_plot(ChartCanvas& canvas, const Chart& chart, const ChartArea& area);
/// The first series as a pie.
void draw_pie(ChartCanvas& canvas, const Chart& chart, const ChartArea& area);

}  // namespace tavrix::dialogs
