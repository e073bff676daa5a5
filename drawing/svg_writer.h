#pragma once

#include <span>
#include <string>
#include <string_view>

#include "drawing/drawing.h"

namespace tavrix::drawing {

/// Path data of polygons, each step relative to the one before, so that the same polygons are the
/// same text wherever the path begins.
class PathWriter {
  public:
    explicit PathWriter(std::size_t expected_bytes = 0) { path_.resize(expected_bytes); }

    /// A polygon of three points or more.
    void add(std::span<const PointTwips> polygon);
    void move_to(PointTwips to) { step('m', to); }
    std::string finish();

  private:
    void step(char letter, PointTwips to);
    void add(char letter, std::int32_t number);
    void make_room();

    // Grows in large steps: a symbol is a few hundred short numbers.
    std::string path_;
    std::size_t used_ = 0;
    PointTwips at_{0, 0};
};

/// An SVG 1.1 file of one line up to the data of its path, which is `colour` on white and begins
/// with a place; lengths are twips inside and points outside. Has room for the data and the tail.
std::string svg_head(std::int32_t width_twips, std::int32_t height_twips, Colour colour,
                     std::size_t data_bytes);
/// What follows the path data.
inline constexpr std::string_view svg_tail = "\"/></svg>\n";

}  // namespace tavrix::drawing
