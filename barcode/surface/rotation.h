#pragma once

#include "ports/surface.h"

namespace tavrix::barcode {

/// What a method returns that hosts know as a function without a result.
struct EmptyResult {};

/// Writes `text` in the surface's font, turned by `angle_degrees` counter-clockwise around (x, y),
/// which are in the surface's scale units. Scale and position are the same afterwards, also when
/// something throws.
void write_turned_text(ports::Surface& surface, base::TextView text, std::int16_t angle_degrees,
                       double x, double y);

/// How many pixels of the surface's device lie between `top` and `top + height`, which are in its
/// scale units; scale and position are the same afterwards.
std::int32_t height_px(ports::Surface& surface, double top, double height);

/// Copies the source a quarter turn clockwise, pixel by pixel, so that its bottom left pixel comes
/// to (x_px, y_px). Both ends of its size count, hence one row and one column more than it has.
void copy_quarter_turn(ports::Surface& source, ports::Surface& destination, std::int32_t x_px,
                       std::int32_t y_px);

/// Turns the source's bitmap clockwise by 90, 180 or 270 degrees into the destination, whose box
/// takes the turned size; does nothing for any other angle. Throws error 0x800403E9 for a bitmap
/// depth other than 8, 15, 16, 24 and 32 and for two surfaces of different depths.
void turn_bitmap(ports::Surface& source, ports::Surface& destination, std::int16_t angle_degrees);

}  // namespace tavrix::barcode
