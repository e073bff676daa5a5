#include "fonts/strokes.h"

#include <algorithm>
#include <cmath>
#include <sstream>

namespace tavrix::fonts {
namespace {

struct Vector {
    double x;
    double y;
    friend Vector operator+(Vector a, Vector b) { return {a.x + b.x, a.y + b.y}; }
    friend Vector operator-(Vector a, Vector b) { return {a.x - b.x, a.y - b.y}; }
    friend Vector operator*(Vector a, double factor) { return {a.x * factor, a.y * factor}; }
};
using Path = std::vector<Vector>;

Vector unit(Vector v) {
    const double length = std::hypot(v.x, v.y);
    return length == 0 ? Vector{1, 0} : v * (1 / length);
}
Vector left_of(Vector v) {
    return {-v.y, v.x};
}

void add_contour(Glyph& glyph, const Path& path) {
    Contour contour;
    double doubled_area = 0;
    for (std::size_t i = 0; i < path.size(); ++i) {
        const Vector next = path[(i + 1) % path.size()];
        doubled_area += path[i].x * next.y - next.x * path[i].y;
        contour.push_back({static_cast<std::int32_t>(std::lround(path[i].x)),
                           static_cast<std::int32_t>(std::lround(path[i].y))});
    }
    if (doubled_area > 0) std::reverse(contour.begin(), contour.end());
    glyph.contours.push_back(std::move(contour));
}

// Each piece reaches half a pen beyond its ends, which closes the corners.
void add_broken_line(Glyph& glyph, const Path& points, double pen) {
    for (std::size_t i = 0; i + 1 < points.size(); ++i) {
        const Vector along = unit(points[i + 1] - points[i]) * (pen / 2);
        const Vector across = left_of(along);
        const Vector from = points[i] - along;
        const Vector to = points[i + 1] + along;
        add_contour(glyph, {from + across, to + across, to - across, from - across});
    }
}

constexpr int steps_per_curve = 4;

void append_curve(Path& path, Vector from, Vector towards, Vector to) {
    for (int step = 1; step <= steps_per_curve; ++step) {
        const double t = static_cast<double>(step) / steps_per_curve;
        path.push_back(from * ((1 - t) * (1 - t)) + towards * (2 * t * (1 - t)) + to * (t * t));
    }
}

Path open_curve(const Path& controls) {
    Path path{controls.front()};
    for (std::size_t i = 1; i + 1 < controls.size(); ++i) {
        const bool last = i + 2 == controls.size();
        const Vector end = last ? controls[i + 1] : (controls[i] + controls[i + 1]) * 0.5;
        append_curve(path, path.back(), controls[i], end);
    }
    return path;
}

Path closed_curve(const Path& controls) {
    Path path{(controls.back() + controls.front()) * 0.5};
    for (std::size_t i = 0; i < controls.size(); ++i) {
        const Vector end = (controls[i] + controls[(i + 1) % controls.size()]) * 0.5;
        append_curve(path, path.back(), controls[i], end);
    }
    return path;
}

/// A band of the pen's width along `path`: one side there, the other side back. A closed path ends
/// where it began, so the band of a ring closes with a seam.
void add_band(Glyph& glyph, const Path& path, double pen, bool closed) {
    Path band;
    Path back;
    for (std::size_t i = 0; i < path.size(); ++i) {
        const bool first = i == 0;
        const bool last = i + 1 == path.size();
        const Vector before = first ? (closed ? path[path.size() - 2] : path[0]) : path[i - 1];
        const Vector after = last ? (closed ? path[1] : path[i]) : path[i + 1];
        const Vector across = left_of(unit(after - before)) * (pen / 2);
        band.push_back(path[i] + across);
        back.push_back(path[i] - across);
    }
    band.insert(band.end(), back.rbegin(), back.rend());
    add_contour(glyph, band);
}

void add_stroke(Glyph& glyph, char kind, const Path& points, double pen) {
    if (kind == 'L') add_broken_line(glyph, points, pen);
    if (kind == 'S') add_band(glyph, open_curve(points), pen, false);
    if (kind == 'O') add_band(glyph, closed_curve(points), pen, true);
}

const Letter* find_letter(char16_t character) {
    const std::vector<Letter>& table = letters();
    const auto found = std::find_if(table.begin(), table.end(), [=](const Letter& letter) {
        return letter.character == character;
    });
    return found == table.end() ? nullptr : &*found;
}

void add_letter(Glyph& glyph, const Letter& letter, const Placement& placement) {
    std::istringstream words(letter.strokes);
    char kind = 0;
    Path points;
    std::string word;
    while (words >> word) {
        if (word[0] >= 'A' && word[0] <= 'Z') {
            if (kind != 0) add_stroke(glyph, kind, points, placement.pen);
            kind = word[0];
            points.clear();
            continue;
        }
        const double x = std::stoi(word);
        int y = 0;
        words >> y;
        points.push_back(
            {placement.x + x * placement.scale_x, placement.y + y * placement.scale_y});
    }
    if (kind != 0) add_stroke(glyph, kind, points, placement.pen);
}

Font make_caption_font() {
    constexpr std::int32_t unit_size = 80;  // font units of one grid unit
    constexpr std::int32_t bearing = 2 * unit_size;
    Font font;
    font.family = u"Arial CE";
    font.units_per_em = 2048;
    font.ascent = 1860;
    font.descent = 440;
    font.add({10 * unit_size, {}}, u"");
    for (const Letter& letter : letters()) {
        Glyph glyph;
        glyph.advance = letter.width * unit_size + 2 * bearing;
        add_letter(glyph, letter, {bearing, 0, unit_size, unit_size, 2.2 * unit_size});
        font.add(std::move(glyph), {&letter.character, 1});
    }
    return font;
}

}  // namespace

void add_strokes(Glyph& glyph, base::TextView text, const Placement& placement) {
    for (const char16_t character : text) {
        if (const Letter* letter = find_letter(character)) add_letter(glyph, *letter, placement);
    }
}

const Font& caption_font() {
    static const Font font = make_caption_font();
    return font;
}

}  // namespace tavrix::fonts
