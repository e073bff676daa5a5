#include "com/forms/emblem.h"

#include <algorithm>

#include "windows/gdi.h"

namespace tavrix::com {
namespace {

constexpr COLORREF ground_colour = RGB(0x1F, 0x4E, 0x79);
constexpr COLORREF letter_colour = RGB(0xFF, 0xFF, 0xFF);
constexpr COLORREF bar_colour = RGB(0x9C, 0xC3, 0xE6);

// Everything lies on a grid of 24 by 24, so at 24, 48 and 96 pixels every edge is a sharp one.
constexpr int grid = 24;

struct Block {
    int left, top, right, bottom;
    COLORREF colour;
};
constexpr Block blocks[] = {
    {0, 0, 24, 24, ground_colour}, {4, 4, 20, 8, letter_colour}, {10, 8, 14, 20, letter_colour},
    {4, 11, 5, 20, bar_colour},    {6, 11, 8, 20, bar_colour},   {16, 11, 17, 20, bar_colour},
    {18, 11, 20, 20, bar_colour},
};

}  // namespace

void draw_emblem(HDC device, const RECT& place) noexcept {
    const LONG side_px = std::min(place.right - place.left, place.bottom - place.top);
    for (const Block& block : blocks) {
        const RECT pixels = {
            place.left + block.left * side_px / grid, place.top + block.top * side_px / grid,
            place.left + block.right * side_px / grid, place.top + block.bottom * side_px / grid};
        const windows::GdiBrush brush(CreateSolidBrush(block.colour));
        FillRect(device, &pixels, brush.get());
    }
}

}  // namespace tavrix::com
