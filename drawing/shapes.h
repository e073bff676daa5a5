#pragma once

#include <span>
#include <vector>

#include "drawing/drawing.h"

namespace tavrix::drawing {

/// A place before it is rounded to whole twips.
struct Place {
    double x;
    double y;
};
using Outline = std::vector<Place>;

void add_polygon(Drawing& drawing, std::span<const Place> outline);

/// A band of `width` along each stretch, drawn half a width beyond its ends, which closes the
/// corners.
void add_line(Drawing& drawing, std::span<const Place> path, double width);

/// The same in pieces: `dashes` are the lengths drawn and left out in turn, an even number of them,
/// each more than 0, going on around the corners.
void add_dashed_line(Drawing& drawing, std::span<const Place> path, double width,
                     std::span<const double> dashes);

/// Parallel lines inside a polygon of any shape, each `distance` twips from the next; they run up
/// to the right at `angle_degrees`.
struct Hatching {
    double angle_degrees;
    double distance;
    double width;
};
void add_hatching(Drawing& drawing, std::span<const Place> outline, const Hatching& hatching);

/// A piece of a pie, from `begin` to `end`, which are shares of the whole, clockwise from the top.
Outline sector(Place centre, double radius, double begin, double end);

Outline rectangle(double left, double top, double right, double bottom);

}  // namespace tavrix::drawing
