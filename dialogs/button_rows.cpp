#include "dialogs/button_rows.h"

#include <algorithm>

namespace tavrix::dialogs {
namespace {

int tallest_of(const std::vector<PixelSize>& needed, std::size_t first, std::size_t end) {
    int tallest = 0;
    for (std::size_t i = first; i < end; ++i) tallest = std::max(tallest, needed[i].height);
    return tallest;
}

}  // namespace

ButtonRows::ButtonRows(const std::vector<PixelSize>& needed, int room_width, int gap) {
    if (needed.empty()) return;
    int widest = 0;
    int side_by_side = -gap;
    for (const PixelSize& size : needed) {
        widest = std::max(widest, size.width);
        side_by_side += size.width + gap;
    }
    if (side_by_side <= room_width) {
        height = tallest_of(needed, 0, needed.size());
        int left = room_width - side_by_side;
        for (const PixelSize& size : needed) {
            places.push_back({left, 0, {size.width, height}});
            left += size.width + gap;
        }
        return;
    }
    const int columns = std::max(1, (room_width + gap) / (widest + gap));
    const int width = (room_width + gap) / columns - gap;
    for (std::size_t first = 0; first < needed.size(); first += columns) {
        const std::size_t end = std::min(needed.size(), first + columns);
        const int top = places.empty() ? 0 : height + gap;
        const int row_height = tallest_of(needed, first, end);
        for (std::size_t i = first; i < end; ++i) {
            const int column = static_cast<int>(i - first);
            places.push_back({column * (width + gap), top, {width, row_height}});
        }
        height = top + row_height;
    }
}

}  // namespace tavrix::dialogs
