#pragma once

#include <string>
#include <vector>

#include "drawing/text.h"

namespace tavrix::drawing {

/// A picture of one line of text: its size, and the left end of the line's top.
struct TextFrame {
    std::int32_t width_twips;
    std::int32_t height_twips;
    std::int32_t left_twips;
    std::int32_t top_twips;
};

/// Writes pictures of one line of text in one font and size as SVG, by the thousand. Every glyph's
/// outline is one text, made once and relative from its first to its last step; a line is those
/// texts one behind the other.
class TextSvg {
  public:
    /// `em_twips` must make whole twips of the font's advances.
    TextSvg(const fonts::Font& font, double em_twips, Colour colour);

    /// What to_svg makes of the same text drawn with add_text.
    std::string write(base::TextView text, const TextFrame& frame) const;

  private:
    const fonts::Font& font_;
    Colour colour_;
    std::vector<std::string> paths_;
};

}  // namespace tavrix::drawing
