#include "drawing/drawing.h"

#include <cmath>

#include "base/error.h"

namespace tavrix::drawing {
namespace {

Drawing turned_once(const Drawing& drawing) {
    Drawing result(drawing.height_twips(), drawing.width_twips(), drawing.colour());
    result.add_placed(drawing, [&](PointTwips point) {
        return PointTwips{drawing.height_twips() - point.y_twips, point.x_twips};
    });
    return result;
}

}  // namespace

void throw_too_large() {
    throw base::AutomationError(base::ErrorNumber::overflow, u"Tavrix",
                                u"The picture is too large");
}

std::int32_t whole_twips(double twips) {
    // Half of what 32 bits hold, so that the distance of two points fits as well.
    constexpr double largest_twips = 1 << 30;
    if (!(std::abs(twips) < largest_twips)) throw_too_large();
    return static_cast<std::int32_t>(std::lround(twips));
}

Drawing turned(const Drawing& drawing, int quarter_turns) {
    Drawing result = drawing;
    const int turns = ((quarter_turns % 4) + 4) % 4;
    for (int turn = 0; turn < turns; ++turn) result = turned_once(result);
    return result;
}

}  // namespace tavrix::drawing
