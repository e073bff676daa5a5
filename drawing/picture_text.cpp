#include "drawing/picture_text.h"

#include <cmath>

#include "drawing/text.h"
#include "fonts/strokes.h"

namespace tavrix::drawing {
namespace {

base::Text in_caption_signs(base::TextView text) {
    base::Text result;
    for (const char16_t character : text) {
        if (character == u'…') {
            result += u"...";
        } else if (character == u'\u00A0') {
            result += u' ';
        } else {
            result += character;
        }
    }
    return result;
}

}  // namespace

double caption_width(base::TextView text, double em_twips, bool) {
    const fonts::Font& font = fonts::caption_font();
    return fonts::width_of(font, in_caption_signs(text)) * em_twips / font.units_per_em;
}

Picture with_captions(Picture picture) {
    const fonts::Font& font = fonts::caption_font();
    for (const Label& label : picture.labels) {
        const double width = caption_width(label.text, label.em_twips, label.bold);
        const double before = width * (static_cast<double>(label.alignment) / 2);
        const double above = (font.ascent + font.descent) * label.em_twips / font.units_per_em / 2;
        const double angle = label.angle_degrees * std::acos(-1) / 180;
        const double cosine = std::cos(angle);
        const double sine = std::sin(angle);
        Drawing& layer = picture.add_layer(label.colour);
        add_text(layer, font, in_caption_signs(label.text),
                 {label.x_twips - before * cosine - above * sine,
                  label.y_twips + before * sine - above * cosine, label.em_twips,
                  static_cast<double>(label.angle_degrees)});
    }
    picture.labels.clear();
    return picture;
}

}  // namespace tavrix::drawing
