#include "drawing/drawing.h"

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

Drawing turned(const Drawing& drawing, int quarter_turns) {
    Drawing result = drawing;
    const int turns = ((quarter_turns % 4) + 4) % 4;
    for (int turn = 0; turn < turns; ++turn) result = turned_once(result);
    return result;
}

}  // namespace tavrix::drawing
