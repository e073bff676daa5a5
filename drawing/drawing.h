#pragma once

#include <cstdint>
#include <initializer_list>
#include <span>
#include <vector>

namespace tavrix::drawing {

/// A colour as Windows writes it: 0x00BBGGRR.
using Colour = std::uint32_t;

struct PointTwips {
    std::int32_t x_twips;
    std::int32_t y_twips;
    friend bool operator==(const PointTwips&, const PointTwips&) = default;
};

/// Throws the overflow error.
[[noreturn]] void throw_too_large();

/// Rounded to the nearest whole number. Throws the overflow error for a length that no picture has.
std::int32_t whole_twips(double twips);

/// A picture as polygons of one colour on white, the y axis pointing down, 1440 twips to the inch.
/// Every door draws from this one description. Polygons are simple; where two of them
/// overlap, both are dark. They come in rows, each of which is drawn at once.
class Drawing {
  public:
    Drawing() = default;
    Drawing(std::int32_t width_twips, std::int32_t height_twips, Colour colour = 0)
        : width_twips_(width_twips), height_twips_(height_twips), colour_(colour) {}

    std::int32_t width_twips() const noexcept { return width_twips_; }
    std::int32_t height_twips() const noexcept { return height_twips_; }
    Colour colour() const noexcept { return colour_; }
    void resize(std::int32_t width_twips, std::int32_t height_twips) noexcept {
        width_twips_ = width_twips;
        height_twips_ = height_twips;
    }

    void add(std::initializer_list<PointTwips> polygon) { add(std::span(polygon)); }
    void add(std::span<const PointTwips> polygon) {
        points_.insert(points_.end(), polygon.begin(), polygon.end());
        sizes_.push_back(static_cast<std::int32_t>(polygon.size()));
    }
    void add_rectangle(std::int32_t left, std::int32_t top, std::int32_t right,
                       std::int32_t bottom) {
        add({{left, top}, {right, top}, {right, bottom}, {left, bottom}});
    }
    /// What was added since the last call is one row; an empty row is none.
    void end_row() {
        const std::size_t begun = rows_.empty() ? 0 : rows_.back();
        if (sizes_.size() > begun) rows_.push_back(sizes_.size());
    }
    /// Adds the polygons of `other`, each point where `place` brings it, as one row.
    template <typename Place>
    void add_placed(const Drawing& other, Place&& place) {
        reserve(sizes_.size() + other.sizes_.size());
        for (const PointTwips point : other.points_) points_.push_back(place(point));
        sizes_.insert(sizes_.end(), other.sizes_.begin(), other.sizes_.end());
        end_row();
    }
    void reserve(std::size_t polygons) {
        points_.reserve(polygons * 4);
        sizes_.reserve(polygons);
    }

    /// All points, polygon after polygon, `sizes` of them each.
    const std::vector<PointTwips>& points() const noexcept { return points_; }
    const std::vector<std::int32_t>& sizes() const noexcept { return sizes_; }
    /// How many polygons there are at the end of each row.
    const std::vector<std::size_t>& rows() const noexcept { return rows_; }

    /// Calls `draw` with the points of each polygon in turn.
    template <typename Draw>
    void for_each_polygon(Draw&& draw) const {
        std::size_t first = 0;
        for (const std::int32_t size : sizes_) {
            draw(std::span(points_).subspan(first, static_cast<std::size_t>(size)));
            first += static_cast<std::size_t>(size);
        }
    }

  private:
    std::int32_t width_twips_ = 0;
    std::int32_t height_twips_ = 0;
    Colour colour_ = 0;
    std::vector<PointTwips> points_;
    std::vector<std::int32_t> sizes_;
    std::vector<std::size_t> rows_;
};

/// The drawing turned clockwise by a multiple of 90 degrees.
Drawing turned(const Drawing& drawing, int quarter_turns);

}  // namespace tavrix::drawing
