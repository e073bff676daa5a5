#include "pdfsign/caption.h"

#include <algorithm>

#include "pdfsign/caption_font.h"

namespace tavrix::pdfsign {
namespace {

constexpr double margin = 4;
constexpr double line_height = 1.25;
// The subset's tag (ISO 32000-2, 9.9.2).
constexpr const char* font_name = "/TAVRIX+DejaVuSans";

const CaptionGlyph& glyph_of(char16_t character) {
    const auto glyphs = caption_font().glyphs;
    const auto find = [&](char16_t wanted) {
        return std::ranges::lower_bound(glyphs, wanted, {}, &CaptionGlyph::character);
    };
    const auto found = find(character);
    return found != glyphs.end() && found->character == character ? *found : *find(u'?');
}

std::string four_digits(unsigned number) {
    char digits[8];
    std::snprintf(digits, sizeof digits, "%04x", number & 0xFFFFU);
    return digits;
}

// The widths of 9.7.4.3, and which character each glyph stands for (9.10.3).
std::string widths(const Caption& caption) {
    std::string list;
    for (const auto& [glyph, letter] : caption.letters) {
        list += std::to_string(glyph) + " [" + std::to_string(letter.first) + "] ";
    }
    return list;
}

std::string to_unicode(const Caption& caption) {
    std::string map =
        "/CIDInit /ProcSet findresource begin\n12 dict begin\nbegincmap\n"
        "/CIDSystemInfo << /Registry (Adobe) /Ordering (UCS) /Supplement 0 >> def\n"
        "/CMapName /Adobe-Identity-UCS def\n/CMapType 2 def\n"
        "1 begincodespacerange\n<0000> <ffff>\nendcodespacerange\n";
    // A block has at most 100 entries.
    std::size_t left = caption.letters.size();
    std::size_t in_block = 0;
    for (const auto& [glyph, letter] : caption.letters) {
        if (in_block == 0) {
            in_block = std::min<std::size_t>(left, 100);
            map += std::to_string(in_block) + " beginbfchar\n";
        }
        map += "<" + four_digits(unsigned(glyph)) + "> <" + four_digits(letter.second) + ">\n";
        --left;
        if (--in_block == 0) map += "endbfchar\n";
    }
    return map + "endcmap\nCMapName currentdict /CMap defineresource pop\nend\nend\n";
}

// One bit for each glyph that is there (PDF/A-1 wants it).
std::string glyph_set() {
    const int count = caption_font().glyph_count;
    std::string bits(static_cast<std::size_t>((count + 7) / 8), '\xFF');
    if (count % 8 != 0) bits.back() = static_cast<char>(0xFF << (8 - count % 8));
    return bits;
}

QPDFObjGen put_font(Update& update, const Encryption& encryption, const Caption& caption) {
    const CaptionFont& font = caption_font();
    const QPDFObjGen file = update.reserve();
    const QPDFObjGen set = update.reserve();
    const QPDFObjGen descriptor = update.reserve();
    const QPDFObjGen descendant = update.reserve();
    const QPDFObjGen map = update.reserve();
    const QPDFObjGen whole = update.reserve();
    update.put_stream(file, "/Filter /FlateDecode /Length1 " + std::to_string(font.size),
                      base::chars_of(font.packed));
    update.put_stream(set, "", glyph_set());
    std::string box;
    for (const int edge : font.box) box += std::to_string(edge) + " ";
    // Symbolic: the letters go beyond the standard Latin set.
    update.put(descriptor, std::string("<< /Type /FontDescriptor /FontName ") + font_name +
                               " /Flags 4 /FontBBox [ " + box + "] /ItalicAngle 0 /Ascent " +
                               std::to_string(font.ascent) + " /Descent " +
                               std::to_string(font.descent) + " /CapHeight 729 /StemV 80" +
                               " /FontFile2 " + reference(file) + " /CIDSet " + reference(set) +
                               " >>");
    const auto text = [&](std::string_view plain) {
        return hexadecimal(encryption.string(plain, descendant));
    };
    update.put(descendant,
               std::string("<< /Type /Font /Subtype /CIDFontType2 /BaseFont ") + font_name +
                   " /CIDSystemInfo << /Registry " + text("Adobe") + " /Ordering " +
                   text("Identity") + " /Supplement 0 >> /CIDToGIDMap /Identity /DW 600 /W [ " +
                   widths(caption) + "] /FontDescriptor " + reference(descriptor) + " >>");
    update.put_stream(map, "", to_unicode(caption));
    update.put(whole, std::string("<< /Type /Font /Subtype /Type0 /BaseFont ") + font_name +
                          " /Encoding /Identity-H /DescendantFonts [ " + reference(descendant) +
                          " ] /ToUnicode " + reference(map) + " >>");
    return whole;
}

}  // namespace

base::Text readable_name(base::TextView name) {
    constexpr std::size_t longest = 100;
    base::Text readable;
    for (const char16_t c : name) {
        const bool turns = (c >= 0x200E && c <= 0x200F) || (c >= 0x202A && c <= 0x202E) ||
                           (c >= 0x2066 && c <= 0x2069) || c == 0x061C;
        if (turns) continue;
        if (readable.size() == longest) break;
        readable += c < 0x20 || (c >= 0x7F && c < 0xA0) ? u' ' : c;
    }
    const bool is_half = readable.size() == longest && (readable.back() & 0xFC00) == 0xD800;
    if (is_half) readable.pop_back();
    return readable;
}

Caption lay_out(const std::vector<base::Text>& lines, double size) {
    Caption caption;
    caption.height = 2 * margin + line_height * size * static_cast<double>(lines.size());
    std::string shown;
    for (const base::Text& line : lines) {
        std::string codes;
        int advance = 0;
        for (const char16_t c : line) {
            // Two units are one character, and the font has none of those.
            if (c >= 0xDC00 && c < 0xE000) continue;
            const CaptionGlyph& glyph = glyph_of(c);
            caption.letters[glyph.glyph] = {glyph.advance, glyph.character};
            codes += four_digits(glyph.glyph);
            advance += glyph.advance;
        }
        caption.width = std::max(caption.width, advance * size / 1000 + 2 * margin);
        const bool is_first = shown.empty();
        shown += is_first
                     ? decimal(margin) + " " + decimal(caption.height - margin - size) + " Td <"
                     : "0 " + decimal(-line_height * size) + " Td <";
        shown += codes + "> Tj\n";
    }
    caption.drawing = "q /C0 CS 0.6 SC 0.5 w 0.25 0.25 " + decimal(caption.width - 0.5) + " " +
                      decimal(caption.height - 0.5) + " re S Q\nq /C0 cs 0 sc BT /F0 " +
                      decimal(size) + " Tf\n" + shown + "ET Q";
    return caption;
}

QPDFObjGen put_appearance(Update& update, const Encryption& encryption, const Caption& caption,
                          std::string_view matrix) {
    const QPDFObjGen font = put_font(update, encryption, caption);
    const QPDFObjGen form = update.reserve();
    // Calibrated grey needs no output intent, which documents for archives otherwise must have.
    update.put_stream(
        form,
        "/Type /XObject /Subtype /Form /FormType 1 /BBox [ 0 0 " + decimal(caption.width) + " " +
            decimal(caption.height) + " ] /Matrix [ " + std::string(matrix) +
            " 0 0 ] /Resources << /Font << /F0 " + reference(font) +
            " >> /ColorSpace << /C0 [ /CalGray << /WhitePoint [ 0.9505 1 1.089 ] /Gamma 2.2 >> ]"
            " >> >>",
        caption.drawing);
    return form;
}

}  // namespace tavrix::pdfsign
