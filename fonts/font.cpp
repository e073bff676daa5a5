#include "fonts/font.h"

#include <algorithm>

namespace tavrix::fonts {

GlyphId Font::add(Glyph glyph, base::TextView codes) {
    const auto id = static_cast<GlyphId>(glyphs.size());
    glyphs.push_back(std::move(glyph));
    for (const char16_t code : codes) characters.emplace(code, id);
    return id;
}

GlyphId Font::glyph_of(char16_t character) const noexcept {
    const auto found = characters.find(character);
    return found == characters.end() ? GlyphId{0} : found->second;
}

std::vector<GlyphId> shape(const Font& font, base::TextView text) {
    std::vector<GlyphId> glyphs;
    glyphs.reserve(text.size());
    bool triggered = false;
    for (const char16_t character : text) {
        GlyphId glyph = font.glyph_of(character);
        const auto alternate = triggered ? font.alternates.find(glyph) : font.alternates.end();
        triggered =
            std::find(font.triggers.begin(), font.triggers.end(), glyph) != font.triggers.end();
        glyphs.push_back(alternate == font.alternates.end() ? glyph : alternate->second);
    }
    return glyphs;
}

std::int32_t width_of(const Font& font, base::TextView text) {
    std::int32_t width = 0;
    for (const GlyphId glyph : shape(font, text)) width += font.glyphs[glyph].advance;
    return width;
}

}  // namespace tavrix::fonts
