#pragma once

#include <vector>

namespace tavrix::dialogs {

struct PixelSize {
    int width = 0;
    int height = 0;
    bool operator==(const PixelSize&) const = default;
};

struct PixelPlace {
    int left = 0;
    int top = 0;
    PixelSize size;
    bool operator==(const PixelPlace&) const = default;
};

/// Where buttons stand in a room of a width, and the height that they take. One row at the right
/// edge, as forms have it, when all of them fit side by side; otherwise columns of one width that
/// fill the room, read row by row. A button never becomes wider than the room.
struct ButtonRows {
    ButtonRows(const std::vector<PixelSize>& needed, int room_width, int gap);

    std::vector<PixelPlace> places;
    int height = 0;
};

}  // namespace tavrix::dialogs
