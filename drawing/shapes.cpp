#include "drawing/shapes.h"

#include <algorithm>
#include <cmath>

namespace tavrix::drawing {
namespace {

const double full_turn = 2 * std::acos(-1);

PointTwips rounded(Place place) {
    return {whole_twips(place.x), whole_twips(place.y)};
}

// `beyond` is drawn at both ends.
void add_stretch(Drawing& drawing, Place from, Place to, double width, double beyond) {
    const double length = std::hypot(to.x - from.x, to.y - from.y);
    const Place along =
        length > 0 ? Place{(to.x - from.x) / length, (to.y - from.y) / length} : Place{1, 0};
    const Place across = {-along.y * width / 2, along.x * width / 2};
    const Place begin = {from.x - along.x * beyond, from.y - along.y * beyond};
    const Place end = {to.x + along.x * beyond, to.y + along.y * beyond};
    drawing.add({rounded({begin.x + across.x, begin.y + across.y}),
                 rounded({end.x + across.x, end.y + across.y}),
                 rounded({end.x - across.x, end.y - across.y}),
                 rounded({begin.x - across.x, begin.y - across.y})});
}

}  // namespace

void add_polygon(Drawing& drawing, std::span<const Place> outline) {
    std::vector<PointTwips> points;
    points.reserve(outline.size());
    for (const Place place : outline) points.push_back(rounded(place));
    drawing.add(points);
}

void add_line(Drawing& drawing, std::span<const Place> path, double width) {
    for (std::size_t i = 0; i + 1 < path.size(); ++i) {
        add_stretch(drawing, path[i], path[i + 1], width, width / 2);
    }
}

void add_dashed_line(Drawing& drawing, std::span<const Place> path, double width,
                     std::span<const double> dashes) {
    std::size_t dash = 0;
    double left = dashes[0];
    for (std::size_t i = 0; i + 1 < path.size(); ++i) {
        const Place from = path[i];
        const Place to = path[i + 1];
        const double length = std::hypot(to.x - from.x, to.y - from.y);
        double done = 0;
        while (done < length) {
            const double piece = std::min(left, length - done);
            const auto at = [&](double distance) {
                const double share = distance / length;
                return Place{from.x + (to.x - from.x) * share, from.y + (to.y - from.y) * share};
            };
            if (dash % 2 == 0) add_stretch(drawing, at(done), at(done + piece), width, 0);
            done += piece;
            left -= piece;
            if (left <= 0) {
                dash = (dash + 1) % dashes.size();
                left = dashes[dash];
            }
        }
    }
}

void add_hatching(Drawing& drawing, std::span<const Place> outline, const Hatching& hatching) {
    const double angle = hatching.angle_degrees * full_turn / 360;
    const Place along = {std::cos(angle), -std::sin(angle)};
    const Place across = {-along.y, along.x};
    const auto height_of = [&](Place place) { return place.x * across.x + place.y * across.y; };
    const auto length_of = [&](Place place) { return place.x * along.x + place.y * along.y; };
    const auto [lowest, highest] = std::ranges::minmax(outline, {}, height_of);
    std::vector<double> crossings;
    for (double line = std::ceil(height_of(lowest) / hatching.distance) * hatching.distance;
         line < height_of(highest); line += hatching.distance) {
        crossings.clear();
        Place from = outline.back();
        for (const Place to : outline) {
            const double below = height_of(from);
            const double above = height_of(to);
            if ((below <= line) != (above <= line)) {
                const double share = (line - below) / (above - below);
                crossings.push_back(length_of(from) + share * (length_of(to) - length_of(from)));
            }
            from = to;
        }
        std::ranges::sort(crossings);
        for (std::size_t i = 0; i + 1 < crossings.size(); i += 2) {
            const auto at = [&](double length) {
                return Place{along.x * length + across.x * line,
                             along.y * length + across.y * line};
            };
            add_stretch(drawing, at(crossings[i]), at(crossings[i + 1]), hatching.width, 0);
        }
    }
}

Outline sector(Place centre, double radius, double begin, double end) {
    constexpr double steps_per_turn = 180;
    const int steps = std::max(1, static_cast<int>(std::ceil((end - begin) * steps_per_turn)));
    Outline outline;
    // A whole pie has no point in its middle.
    if (end - begin < 1) outline.push_back(centre);
    for (int step = 0; step <= steps; ++step) {
        const double turn = (begin + (end - begin) * step / steps) * full_turn;
        outline.push_back({centre.x + radius * std::sin(turn), centre.y - radius * std::cos(turn)});
    }
    return outline;
}

Outline rectangle(double left, double top, double right, double bottom) {
    return {{left, top}, {right, top}, {right, bottom}, {left, bottom}};
}

}  // namespace tavrix::drawing
