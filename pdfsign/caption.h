#pragma once

#include <string>
#include <vector>

#include "pdfsign/update.h"

namespace tavrix::pdfsign {

/// The lines of a signature's box, laid out.
struct Caption {
    /// In points.
    double width = 0;
    double height = 0;
    /// What draws it, in a space from (0, 0) to (width, height), with the font F0 and the colour
    /// space C0.
    std::string drawing;
    /// The letters that occur, one entry each: glyph, advance, character.
    std::map<int, std::pair<int, char16_t>> letters;
};

/// What the box says of the holder's name: control characters are blanks, marks that turn the
/// direction of writing around are left out, and it ends after 100 characters.
base::Text readable_name(base::TextView name);

/// `size` is the font's, in points. A character that the font lacks becomes "?".
Caption lay_out(const std::vector<base::Text>& lines, double size);

/// Adds the form that draws `caption`, with its font, turned by `matrix`; gives its reference.
QPDFObjGen put_appearance(Update& update, const Encryption& encryption, const Caption& caption,
                          std::string_view matrix);

}  // namespace tavrix::pdfsign
