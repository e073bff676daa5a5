#pragma once

#include <functional>

#include "base/text.h"
#include "drawing/drawing.h"

namespace tavrix::drawing {

enum class Alignment { left, centre, right };

/// One line of text. Its place is the middle of the line's height at its left end, middle or right
/// end; the line is turned counter-clockwise around that place.
struct Label {
    base::Text text;
    double x_twips;
    double y_twips;
    double em_twips;
    Alignment alignment = Alignment::left;
    int angle_degrees = 0;
    bool bold = false;
    Colour colour = 0;
};

/// How wide a line of text is, in twips.
using TextWidth = std::function<double(base::TextView text, double em_twips, bool bold)>;

/// A picture in several colours: layers, each over the one before, and over them lines of text,
/// which every door draws with a font of its own.
struct Picture {
    std::int32_t width_twips = 0;
    std::int32_t height_twips = 0;
    Colour paper = 0xFFFFFF;
    std::vector<Drawing> layers;
    std::vector<Label> labels;

    /// A new layer over all others.
    Drawing& add_layer(Colour colour) {
        return layers.emplace_back(width_twips, height_twips, colour);
    }
};

}  // namespace tavrix::drawing
