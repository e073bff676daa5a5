#include "fonts/font.h"

#include <algorithm>

namespace tavrix::fonts {

GlyphId Font::add(Glyph glyph, base::TextView codes) {
    const auto id = static_cast<GlyphId>(glyphs.size());
    glyphs.push_back(std::move(glyph));
    for (const char16_t code : codes) {
        const bool is_new = characters.emplace(code, id).second;
        if (is_new && code < first_characters.size()) first_characters[code] = id;
    }
    return id;
}

GlyphId Font::glyph_of(char16_t character) const noexcept {
    if (character < first_characters.size()) return first_characters[character];
    const auto found = characters.find(character);
    return found == characters.end() ? GlyphId{0} : found->second;
}

namespace {

/// Calls `take` with each glyph of the text in turn, alternates chosen.
template <typename Take>
void for_each_glyph(const Font& font, base::TextView text, Take&& take) {
    bool triggered = false;
    for (const char16_t character : text) {
        const GlyphId glyph = font.glyph_of(character);
        const auto alternate = triggered ? font.alternates.find(glyph) : font.alternates.end();
        triggered =
            std::find(font.triggers.begin(), font.triggers.end(), glyph) != font.triggers.end();
        take(alternate == font.alternates.end() ? glyph : alternate->second);
    }
}

}  // namespace

std::vector<GlyphId> shape(const Font& font, base::TextView text) {
    std::vector<GlyphId> glyphs;
    glyphs.reserve(text.size());
    for_each_glyph(font, text, [&](GlyphId glyph) { glyphs.push_back(glyph); });
    return glyphs;
}

std::int32_t width_of(const Font& font, base::TextView text) {
    std::int32_t width = 0;
    for_each_glyph(font, text, [&](GlyphId glyph) { width += font.glyphs[glyph].advance; });
    return width;
}

}  // namespace tavrix::fonts
