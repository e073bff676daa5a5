#pragma once

#include "windows/automation.h"

namespace tavrix::com {

/// Draws the product's emblem, a T that stands on bars, as large as it fits into the upper left of
/// `place`.
void draw_emblem(HDC device, const RECT& place) noexcept;

}  // namespace tavrix::com
