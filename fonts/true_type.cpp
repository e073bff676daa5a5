#include "fonts/true_type.h"

#include <algorithm>

#include "base/version.h"

namespace tavrix::fonts {
namespace {

/// Appends big-endian numbers, as every table has them.
class TableWriter {
  public:
    TableWriter& u8(int value) {
        bytes_.push_back(static_cast<std::uint8_t>(value));
        return *this;
    }
    TableWriter& u16(std::int64_t value) {
        return u8(static_cast<int>(value >> 8 & 0xFF)).u8(static_cast<int>(value & 0xFF));
    }
    TableWriter& u32(std::int64_t value) { return u16(value >> 16).u16(value); }
    TableWriter& tag(std::string_view tag) {
        bytes_.insert(bytes_.end(), tag.begin(), tag.end());
        return *this;
    }
    TableWriter& append(const base::Bytes& bytes) {
        bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
        return *this;
    }
    void pad_to_four() {
        while (bytes_.size() % 4 != 0) bytes_.push_back(0);
    }
    std::size_t size() const noexcept { return bytes_.size(); }
    const base::Bytes& bytes() const noexcept { return bytes_; }

  private:
    base::Bytes bytes_;
};

struct Box {
    std::int32_t left = 0, bottom = 0, right = 0, top = 0;

    void include(Point point) {
        left = std::min(left, point.x);
        bottom = std::min(bottom, point.y);
        right = std::max(right, point.x);
        top = std::max(top, point.y);
    }
};

Box box_of(const Glyph& glyph) {
    if (glyph.contours.empty()) return {};
    const Point first = glyph.contours.front().front();
    Box box{first.x, first.y, first.x, first.y};
    for (const Contour& contour : glyph.contours) {
        for (const Point point : contour) box.include(point);
    }
    return box;
}

base::Bytes outline(const Glyph& glyph) {
    TableWriter table;
    // A glyph without outline has no entry of its own, only its width.
    if (glyph.contours.empty()) return {};
    const Box box = box_of(glyph);
    table.u16(static_cast<std::int64_t>(glyph.contours.size()));
    table.u16(box.left).u16(box.bottom).u16(box.right).u16(box.top);
    std::size_t points = 0;
    for (const Contour& contour : glyph.contours) {
        points += contour.size();
        table.u16(static_cast<std::int64_t>(points) - 1);
    }
    table.u16(0);  // no instructions
    constexpr int on_curve = 0x01;
    for (std::size_t i = 0; i < points; ++i) table.u8(on_curve);
    for (const auto coordinate : {&Point::x, &Point::y}) {
        std::int32_t last = 0;
        for (const Contour& contour : glyph.contours) {
            for (const Point& point : contour) {
                table.u16(point.*coordinate - last);
                last = point.*coordinate;
            }
        }
    }
    table.pad_to_four();
    return table.bytes();
}

struct Outlines {
    TableWriter glyf;
    TableWriter loca;
};

Outlines outlines(const Font& font) {
    Outlines tables;
    for (const Glyph& glyph : font.glyphs) {
        tables.loca.u32(static_cast<std::int64_t>(tables.glyf.size()));
        tables.glyf.append(outline(glyph));
    }
    tables.loca.u32(static_cast<std::int64_t>(tables.glyf.size()));
    return tables;
}

std::int32_t widest(const Font& font) {
    std::int32_t width = 0;
    for (const Glyph& glyph : font.glyphs) width = std::max(width, glyph.advance);
    return width;
}

// The box of the whole font; the digits of the caption and every bar lie within the line.
Box box_of(const Font& font) {
    Box box;
    for (const Glyph& glyph : font.glyphs) {
        for (const Contour& contour : glyph.contours) {
            for (const Point point : contour) box.include(point);
        }
    }
    return box;
}

// Seconds since 1904-01-01. Fixed, so that the same sources give the same file.
constexpr std::int64_t made = 3850000000;

TableWriter head(const Font& font) {
    const Box box = box_of(font);
    TableWriter table;
    table.u32(0x00010000).u32(0x00010000).u32(0).u32(0x5F0F3CF5);
    constexpr int baseline_and_bearing_at_zero = 0x0003;
    table.u16(baseline_and_bearing_at_zero).u16(font.units_per_em);
    table.u32(0).u32(made).u32(0).u32(made);
    table.u16(box.left).u16(box.bottom).u16(box.right).u16(box.top);
    constexpr int smallest_readable_px = 8, left_to_right = 2, long_offsets = 1;
    table.u16(0).u16(smallest_readable_px).u16(left_to_right).u16(long_offsets).u16(0);
    return table;
}

TableWriter hhea(const Font& font) {
    const Box box = box_of(font);
    TableWriter table;
    table.u32(0x00010000).u16(font.ascent).u16(-font.descent).u16(0).u16(widest(font));
    table.u16(box.left).u16(0).u16(box.right);
    table.u16(1).u16(0).u16(0);  // an upright caret
    table.u32(0).u32(0).u16(0);
    table.u16(static_cast<std::int64_t>(font.glyphs.size()));
    return table;
}

TableWriter hmtx(const Font& font) {
    TableWriter table;
    for (const Glyph& glyph : font.glyphs) table.u16(glyph.advance).u16(box_of(glyph).left);
    return table;
}

TableWriter maxp(const Font& font) {
    std::size_t points = 0;
    std::size_t contours = 0;
    for (const Glyph& glyph : font.glyphs) {
        std::size_t own = 0;
        for (const Contour& contour : glyph.contours) own += contour.size();
        points = std::max(points, own);
        contours = std::max(contours, glyph.contours.size());
    }
    TableWriter table;
    table.u32(0x00010000).u16(static_cast<std::int64_t>(font.glyphs.size()));
    table.u16(static_cast<std::int64_t>(points)).u16(static_cast<std::int64_t>(contours));
    constexpr int zones = 1, functions = 1, stack = 2;
    table.u16(0).u16(0).u16(zones).u16(0).u16(0).u16(functions).u16(0).u16(stack);
    for (int i = 0; i < 3; ++i) table.u16(0);
    return table;
}

// Format 4, one segment for each character: a barcode font's glyphs seldom follow its codes.
TableWriter cmap(const Font& font) {
    const auto segments = static_cast<std::int64_t>(font.characters.size()) + 1;
    std::int64_t power = 1;
    int exponent = 0;
    while (power * 2 <= segments) power *= 2, ++exponent;
    TableWriter table;
    table.u16(0).u16(1);
    constexpr int windows = 3, unicode = 1;
    table.u16(windows).u16(unicode).u32(12);
    table.u16(4).u16(16 + 8 * segments).u16(0).u16(segments * 2);
    table.u16(power * 2).u16(exponent).u16((segments - power) * 2);
    for (const auto& [code, glyph] : font.characters) table.u16(code);
    table.u16(0xFFFF).u16(0);
    for (const auto& [code, glyph] : font.characters) table.u16(code);
    table.u16(0xFFFF);
    for (const auto& [code, glyph] : font.characters) table.u16(glyph - code);
    table.u16(1);
    for (std::int64_t i = 0; i < segments; ++i) table.u16(0);
    return table;
}

TableWriter os2(const Font& font) {
    const std::int32_t em = font.units_per_em;
    TableWriter table;
    constexpr int regular_weight = 400, medium_width = 5, installable = 0;
    table.u16(1).u16(widest(font)).u16(regular_weight).u16(medium_width).u16(installable);
    for (int i = 0; i < 2; ++i) table.u16(em / 2).u16(em / 2).u16(0).u16(em / 8);
    table.u16(em / 20).u16(em / 4).u16(0);
    for (int i = 0; i < 10; ++i) table.u8(0);  // no family classification
    constexpr int basic_latin_to_extended_a = 0x00000007;
    table.u32(basic_latin_to_extended_a).u32(0).u32(0).u32(0).tag("TVRX");
    constexpr int regular = 0x0040;
    table.u16(regular).u16(font.characters.begin()->first).u16(font.characters.rbegin()->first);
    table.u16(font.ascent).u16(-font.descent).u16(0).u16(font.ascent).u16(font.descent);
    constexpr int latin_1_and_central_european = 0x00000003;
    table.u32(latin_1_and_central_european).u32(0);
    return table;
}

// The outlines are exact and must stay so. A font without programs is taken for one that nobody has
// fitted to pixels, and some systems then move its edges themselves; a function that is never
// called and a setting that only keeps thin strokes whole tell them not to.
TableWriter fpgm() {
    constexpr int push_byte = 0xB0, define_function = 0x2C, end_function = 0x2D;
    TableWriter table;
    table.u8(push_byte).u8(0).u8(define_function).u8(end_function);
    return table;
}

TableWriter prep() {
    constexpr int push_word = 0xB8, scan_control = 0x85, push_byte = 0xB0, scan_type = 0x8D;
    constexpr int always = 0x01FF, smart_dropout = 4;
    TableWriter table;
    table.u8(push_word).u16(always).u8(scan_control);
    table.u8(push_byte).u8(smart_dropout).u8(scan_type);
    return table;
}

TableWriter post() {
    TableWriter table;
    table.u32(0x00030000).u32(0).u16(-100).u16(50);
    for (int i = 0; i < 5; ++i) table.u32(0);
    return table;
}

TableWriter name(const Font& font) {
    base::Text post_script = base::remove_characters(font.family, u" ");
    const std::vector<std::pair<int, base::Text>> names = {
        {0, u"Tavrix"},   {1, font.family},
        {2, u"Regular"},  {3, u"Tavrix: " + font.family},
        {4, font.family}, {5, u"Version " + base::to_decimal(base::version_major) + u".0"},
        {6, post_script}, {13, u"The licence of Tavrix"},
    };
    TableWriter records;
    TableWriter texts;
    for (const auto& [id, text] : names) {
        constexpr int windows = 3, unicode = 1, english = 0x0409;
        records.u16(windows).u16(unicode).u16(english).u16(id);
        records.u16(static_cast<std::int64_t>(text.size() * 2));
        records.u16(static_cast<std::int64_t>(texts.size()));
        for (const char16_t character : text) texts.u16(character);
    }
    TableWriter table;
    table.u16(0).u16(static_cast<std::int64_t>(names.size()));
    table.u16(static_cast<std::int64_t>(6 + records.size()));
    table.append(records.bytes()).append(texts.bytes());
    return table;
}

TableWriter coverage(std::vector<GlyphId> glyphs) {
    std::sort(glyphs.begin(), glyphs.end());
    TableWriter table;
    table.u16(1).u16(static_cast<std::int64_t>(glyphs.size()));
    for (const GlyphId glyph : glyphs) table.u16(glyph);
    return table;
}

TableWriter lookup(int type, const TableWriter& subtable) {
    TableWriter table;
    table.u16(type).u16(0).u16(1).u16(8).append(subtable.bytes());
    return table;
}

// One contextual lookup that calls one single substitution: behind a trigger the alternate.
TableWriter gsub(const Font& font) {
    std::vector<GlyphId> from;
    TableWriter substitutes;
    for (const auto& [glyph, alternate] : font.alternates) {
        from.push_back(glyph);
        substitutes.u16(alternate);
    }
    const TableWriter triggers = coverage(font.triggers);
    const TableWriter inputs = coverage(from);

    TableWriter context;
    constexpr std::int64_t context_size = 18;
    const auto inputs_at = context_size + static_cast<std::int64_t>(triggers.size());
    context.u16(3).u16(1).u16(context_size).u16(1).u16(inputs_at).u16(0).u16(1).u16(0).u16(1);
    context.append(triggers.bytes()).append(inputs.bytes());

    TableWriter single;
    single.u16(2).u16(static_cast<std::int64_t>(6 + substitutes.size()));
    single.u16(static_cast<std::int64_t>(from.size()));
    single.append(substitutes.bytes()).append(inputs.bytes());

    const TableWriter chained = lookup(6, context);
    const TableWriter replacing = lookup(1, single);
    TableWriter lookups;
    lookups.u16(2).u16(6).u16(static_cast<std::int64_t>(6 + chained.size()));
    lookups.append(chained.bytes()).append(replacing.bytes());

    TableWriter table;
    table.u32(0x00010000).u16(10).u16(30).u16(44);
    // One script with one language system that takes feature 0.
    table.u16(1).tag("DFLT").u16(8).u16(4).u16(0).u16(0).u16(0xFFFF).u16(1).u16(0);
    table.u16(1).tag("calt").u16(8).u16(0).u16(1).u16(0);
    table.append(lookups.bytes());
    return table;
}

std::uint32_t checksum(const base::Bytes& bytes) {
    std::uint32_t sum = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        sum += static_cast<std::uint32_t>(bytes[i]) << (24 - 8 * (i % 4));
    }
    return sum;
}

base::Bytes assemble(std::vector<std::pair<std::string_view, TableWriter>> tables) {
    std::sort(tables.begin(), tables.end(),
              [](const auto& left, const auto& right) { return left.first < right.first; });
    const auto count = static_cast<std::int64_t>(tables.size());
    std::int64_t power = 1;
    int exponent = 0;
    while (power * 2 <= count) power *= 2, ++exponent;
    TableWriter file;
    file.u32(0x00010000).u16(count).u16(power * 16).u16(exponent).u16((count - power) * 16);
    std::int64_t offset = 12 + 16 * count;
    std::size_t adjustment_at = 0;
    for (auto& [tag, table] : tables) {
        const std::size_t length = table.size();
        table.pad_to_four();
        file.tag(tag).u32(checksum(table.bytes())).u32(offset);
        file.u32(static_cast<std::int64_t>(length));
        if (tag == "head") adjustment_at = static_cast<std::size_t>(offset) + 8;
        offset += static_cast<std::int64_t>(table.size());
    }
    for (const auto& [tag, table] : tables) file.append(table.bytes());
    base::Bytes bytes = file.bytes();
    const std::uint32_t adjustment = 0xB1B0AFBA - checksum(bytes);
    for (std::size_t i = 0; i < 4; ++i) {
        bytes[adjustment_at + i] = static_cast<std::uint8_t>(adjustment >> (24 - 8 * i));
    }
    return bytes;
}

}  // namespace

base::Bytes to_true_type(const Font& font) {
    Outlines shapes = outlines(font);
    std::vector<std::pair<std::string_view, TableWriter>> tables = {
        {"OS/2", os2(font)},
        {"cmap", cmap(font)},
        {"glyf", std::move(shapes.glyf)},
        {"head", head(font)},
        {"hhea", hhea(font)},
        {"hmtx", hmtx(font)},
        {"loca", std::move(shapes.loca)},
        {"maxp", maxp(font)},
        {"name", name(font)},
        {"post", post()},
        {"fpgm", fpgm()},
        {"prep", prep()},
    };
    if (!font.alternates.empty()) tables.emplace_back("GSUB", gsub(font));
    return assemble(std::move(tables));
}

}  // namespace tavrix::fonts
