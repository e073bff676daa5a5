#include "drawing/coverage.h"

#include <algorithm>
#include <cmath>

namespace tavrix::drawing {
namespace {

constexpr int lines_per_pixel = 4;
constexpr double largest_picture_px = 1 << 28;

/// Adds polygons to a picture, each pixel row as a few scan lines on which the horizontal share of
/// a pixel is exact.
class Painter {
  public:
    Painter(Coverage& picture, double scale) : picture_(picture), scale_(scale) {}

    void add(std::span<const PointTwips> polygon) {
        double top = picture_.height_px;
        double bottom = 0;
        for (const PointTwips point : polygon) {
            top = std::min(top, point.y_twips * scale_);
            bottom = std::max(bottom, point.y_twips * scale_);
        }
        const int first = std::max(0, static_cast<int>(std::floor(top)));
        const int last = std::min(picture_.height_px, static_cast<int>(std::ceil(bottom)));
        for (int row = first; row < last; ++row) {
            for (int line = 0; line < lines_per_pixel; ++line) {
                const double y = row + (line + 0.5) / lines_per_pixel;
                find_crossings(polygon, y);
                for (std::size_t i = 0; i + 1 < crossings_.size(); i += 2) {
                    add_span(row, crossings_[i], crossings_[i + 1]);
                }
            }
        }
    }

  private:
    void find_crossings(std::span<const PointTwips> polygon, double y) {
        crossings_.clear();
        PointTwips from = polygon.back();
        for (const PointTwips to : polygon) {
            const double from_y = from.y_twips * scale_;
            const double to_y = to.y_twips * scale_;
            if ((from_y <= y) != (to_y <= y)) {
                const double share = (y - from_y) / (to_y - from_y);
                crossings_.push_back((from.x_twips + share * (to.x_twips - from.x_twips)) * scale_);
            }
            from = to;
        }
        std::sort(crossings_.begin(), crossings_.end());
    }

    void add_span(int row, double left, double right) {
        left = std::max(left, 0.0);
        right = std::min(right, static_cast<double>(picture_.width_px));
        for (int x = static_cast<int>(left); x < right; ++x) {
            const double share = std::min(right, x + 1.0) - std::max(left, static_cast<double>(x));
            std::uint8_t& pixel = picture_.dark[static_cast<std::size_t>(row) *
                                                    static_cast<std::size_t>(picture_.width_px) +
                                                static_cast<std::size_t>(x)];
            // Four full scan lines make 256, which is as dark as 255.
            const int added = static_cast<int>(std::lround(share * 256 / lines_per_pixel));
            pixel = static_cast<std::uint8_t>(std::min(255, pixel + added));
        }
    }

    Coverage& picture_;
    double scale_;
    std::vector<double> crossings_;
};

}  // namespace

Coverage rasterise(const Drawing& drawing, double pixels_per_twip) {
    // A length that is a whole number of pixels must not grow by one through rounding.
    constexpr double slack = 1e-6;
    const double width = std::ceil(drawing.width_twips() * pixels_per_twip - slack);
    const double height = std::ceil(drawing.height_twips() * pixels_per_twip - slack);
    if (!(width * height <= largest_picture_px)) throw_too_large();
    Coverage picture;
    picture.width_px = static_cast<std::int32_t>(width);
    picture.height_px = static_cast<std::int32_t>(height);
    picture.dark.resize(static_cast<std::size_t>(width * height));
    Painter painter(picture, pixels_per_twip);
    drawing.for_each_polygon([&](std::span<const PointTwips> polygon) { painter.add(polygon); });
    return picture;
}

}  // namespace tavrix::drawing
