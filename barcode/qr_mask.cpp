#include "barcode/qr_mask.h"

#include <algorithm>
#include <array>
#include <bitset>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <vector>

namespace tavrix::barcode {
namespace {

using qrcodegen::QrCode;

constexpr int mask_count = 8;

// Penalty points (ISO/IEC 18004: 2015, 7.8.3.1, table 11).
constexpr int run_points = 3;
constexpr int block_points = 3;
constexpr int finder_points = 40;
constexpr int balance_points = 10;

/// Table 10: whether mask `mask` turns the module over.
constexpr bool is_turned(int mask, int column, int row) {
    switch (mask) {
        case 0:
            return (row + column) % 2 == 0;
        case 1:
            return row % 2 == 0;
        case 2:
            return column % 3 == 0;
        case 3:
            return (row + column) % 3 == 0;
        case 4:
            return (row / 2 + column / 3) % 2 == 0;
        case 5:
            return row * column % 2 + row * column % 3 == 0;
        case 6:
            return (row * column % 2 + row * column % 3) % 2 == 0;
        default:
            return ((row + column) % 2 + row * column % 3) % 2 == 0;
    }
}

/// Every mask repeats itself after twelve modules in both directions.
constexpr std::size_t period = 12;

/// Bit i of `rows[r]`: the mask turns module i of row r over; of `columns[c]`, module i of column
/// c.
struct MaskPattern {
    std::array<std::uint16_t, period> rows{};
    std::array<std::uint16_t, period> columns{};
};

constexpr std::array<MaskPattern, mask_count> mask_patterns = [] {
    std::array<MaskPattern, mask_count> patterns;
    for (int mask = 0; mask < mask_count; ++mask) {
        MaskPattern& pattern = patterns[static_cast<std::size_t>(mask)];
        for (std::size_t row = 0; row < period; ++row) {
            for (std::size_t column = 0; column < period; ++column) {
                if (!is_turned(mask, static_cast<int>(column), static_cast<int>(row))) continue;
                pattern.rows[row] |= static_cast<std::uint16_t>(1 << column);
                pattern.columns[column] |= static_cast<std::uint16_t>(1 << row);
            }
        }
    }
    return patterns;
}();

/// Where alignment patterns have their centres, in rows and columns alike (annex E). The distance
/// is what divides the way evenly, rounded up to a whole even number; version 32 is the table's
/// only exception.
std::vector<int> alignment_centres(int version) {
    if (version == 1) return {};
    constexpr int first = 6;
    const int last = 4 * version + 10;
    const int gaps = version / 7 + 1;
    const int step = version == 32 ? 26 : (last - first + 2 * gaps - 1) / (2 * gaps) * 2;
    std::vector<int> centres = {first};
    for (int gap = gaps - 1; gap >= 0; --gap) centres.push_back(last - gap * step);
    return centres;
}

/// The 15 bits of the format information, the most significant one first (7.9, annex C).
int format_bits(QrCode::Ecc level, int mask) {
    constexpr std::array<int, 4> indicators = {1, 0, 3, 2};
    constexpr int generator = 0b10100110111;
    constexpr int pattern = 0b101010000010010;
    const int data = indicators[static_cast<std::size_t>(level)] << 3 | mask;
    int remainder = data << 10;
    for (int bit = 14; bit >= 10; --bit) {
        if (remainder >> bit & 1) remainder ^= generator << (bit - 10);
    }
    return (data << 10 | remainder) ^ pattern;
}

/// A square of modules, `Width` bits or less a side, by its rows and by its columns. Bits behind
/// the last module are 0, as light as the quiet zone.
template <std::size_t Width>
struct Grid {
    using Line = std::bitset<Width>;
    std::array<Line, Width> rows;
    std::array<Line, Width> columns;

    void set(int column, int row, bool value) {
        const auto x = static_cast<std::size_t>(column);
        const auto y = static_cast<std::size_t>(row);
        rows[y][x] = value;
        columns[x][y] = value;
    }
};

/// Judges the eight masks of one symbol.
template <std::size_t Width>
class Judge {
  public:
    explicit Judge(const QrCode& symbol)
        : symbol_(symbol), size_(symbol.getSize()), lines_(static_cast<std::size_t>(size_)) {
        for (std::size_t at = 0; at < lines_; ++at) inside_.set(at);
        mark_data();
        for (int row = 0; row < size_; ++row) {
            for (int column = 0; column < size_; ++column) {
                modules_.set(column, row, symbol.getModule(column, row));
            }
        }
        turn(symbol.getMask());
    }

    int best() {
        int best_mask = 0;
        int least = std::numeric_limits<int>::max();
        for (int mask = 0; mask < mask_count; ++mask) {
            turn(mask);
            draw_format(mask);
            const int points = penalty();
            if (points < least) {
                least = points;
                best_mask = mask;
            }
            turn(mask);
        }
        return best_mask;
    }

  private:
    using Line = typename Grid<Width>::Line;

    void mark_rectangle(int left, int top, int width, int height) {
        for (int row = top; row < top + height; ++row) {
            for (int column = left; column < left + width; ++column) data_.set(column, row, false);
        }
    }

    /// What no mask touches (6.3): finders with their separators and the format information beside
    /// them, timing, alignment and, from version 7 on, the version information.
    void mark_data() {
        for (std::size_t at = 0; at < lines_; ++at) data_.rows[at] = data_.columns[at] = inside_;
        mark_rectangle(0, 0, 9, 9);
        mark_rectangle(size_ - 8, 0, 8, 9);
        mark_rectangle(0, size_ - 8, 9, 8);
        mark_rectangle(0, 6, size_, 1);
        mark_rectangle(6, 0, 1, size_);
        const int version = symbol_.getVersion();
        const std::vector<int> centres = alignment_centres(version);
        for (const int x : centres) {
            for (const int y : centres) {
                const bool finder =
                    (x == 6 && (y == 6 || y == size_ - 7)) || (x == size_ - 7 && y == 6);
                if (!finder) mark_rectangle(x - 2, y - 2, 5, 5);
            }
        }
        if (version >= 7) {
            mark_rectangle(size_ - 11, 0, 3, 6);
            mark_rectangle(0, size_ - 11, 6, 3);
        }
    }

    static Line repeated(std::uint16_t bits) {
        Line line(bits);
        for (std::size_t filled = period; filled < Width; filled *= 2) line |= line << filled;
        return line;
    }

    /// Applies a mask, or takes it off again.
    void turn(int mask) {
        const MaskPattern& pattern = mask_patterns[static_cast<std::size_t>(mask)];
        for (std::size_t first = 0; first < period; ++first) {
            const Line row = repeated(pattern.rows[first]);
            const Line column = repeated(pattern.columns[first]);
            for (std::size_t at = first; at < lines_; at += period) {
                modules_.rows[at] ^= row & data_.rows[at];
                modules_.columns[at] ^= column & data_.columns[at];
            }
        }
    }

    /// Both copies of the format information (7.9.1, figure 25).
    void draw_format(int mask) {
        const int bits = format_bits(symbol_.getErrorCorrectionLevel(), mask);
        for (int bit = 0; bit < 15; ++bit) {
            const bool dark = (bits >> bit & 1) != 0;
            // Up the eighth column, round the corner and out along the eighth row; timing is left
            // out.
            if (bit < 8) {
                modules_.set(8, bit < 6 ? bit : bit + 1, dark);
                modules_.set(size_ - 1 - bit, 8, dark);
            } else {
                modules_.set(bit == 8 ? 7 : 14 - bit, 8, dark);
                modules_.set(8, size_ - 15 + bit, dark);
            }
        }
    }

    int penalty() const {
        int points = 0;
        std::size_t dark = 0;
        for (std::size_t at = 0; at < lines_; ++at) {
            points += line_penalty(modules_.rows[at]) + line_penalty(modules_.columns[at]);
            dark += modules_.rows[at].count();
            if (at > 0) points += block_penalty(modules_.rows[at - 1], modules_.rows[at]);
        }
        return points + balance_penalty(static_cast<int>(dark));
    }

    /// Bit i: modules i and i + 1 have the same colour.
    Line equal_neighbours(const Line& line) const { return ~(line ^ line >> 1) & inside_ >> 1; }

    /// Runs of five and more of one colour, and patterns that look like finders.
    int line_penalty(const Line& line) const {
        const Line pairs = equal_neighbours(line);
        const Line threes = pairs & pairs >> 1;
        const Line fives = threes & threes >> 2;
        const Line starts = fives & ~(fives << 1);
        const std::size_t points =
            fives.count() + static_cast<std::size_t>(run_points - 1) * starts.count();
        return static_cast<int>(points) + finder_points * finders(line);
    }

    /// Bit i: modules i to i + length - 1 are all dark.
    static Line all_dark(Line line, std::size_t length) {
        for (std::size_t known = 1; known < length;) {
            const std::size_t more = std::min(known, length - known);
            line &= line >> more;
            known += more;
        }
        return line;
    }

    /// Bit i: one of the modules i to i + length - 1 is dark; none of the quiet zone's is.
    static Line any_dark(Line line, std::size_t length) {
        for (std::size_t known = 1; known < length;) {
            const std::size_t more = std::min(known, length - known);
            line |= line >> more;
            known += more;
        }
        return line;
    }

    /// Bit i: one of the modules i - length to i - 1 is dark.
    static Line any_dark_before(Line line, std::size_t length) {
        line <<= 1;
        for (std::size_t known = 1; known < length;) {
            const std::size_t more = std::min(known, length - known);
            line |= line << more;
            known += more;
        }
        return line;
    }

    /// Patterns of dark, light, three dark, light, dark, in units of any size, with a unit of light
    /// before and behind and four on one side at least; both sides count.
    static int finders(const Line& line) {
        std::size_t found = 0;
        for (std::size_t unit = 1;; ++unit) {
            const Line middle = all_dark(line, 3 * unit);
            if (middle.none()) return static_cast<int>(found);
            const Line edge = all_dark(line, unit);
            const Line dark = any_dark(line, unit);
            const Line core = edge & ~(dark >> unit) & middle >> 2 * unit & ~(dark >> 5 * unit) &
                              edge >> 6 * unit & ~(dark >> 7 * unit) & ~any_dark_before(line, unit);
            if (core.none()) continue;
            found += (core & ~any_dark_before(line, 4 * unit)).count() +
                     (core & ~(any_dark(line, 4 * unit) >> 7 * unit)).count();
        }
    }

    int block_penalty(const Line& upper, const Line& lower) const {
        const Line blocks = equal_neighbours(upper) & equal_neighbours(lower) & ~(upper ^ lower);
        return block_points * static_cast<int>(blocks.count());
    }

    /// Ten points for each step of 5 % that the share of dark modules lies outside 45 to 55 %.
    int balance_penalty(int dark) const {
        const int total = size_ * size_;
        const int steps = (std::abs(dark * 20 - total * 10) + total - 1) / total - 1;
        return balance_points * steps;
    }

    const QrCode& symbol_;
    int size_;
    std::size_t lines_;
    Line inside_;
    Grid<Width> data_;
    Grid<Width> modules_;
};

}  // namespace

int choose_qr_mask(const QrCode& symbol) {
    const int size = symbol.getSize();
    if (size <= 64) return Judge<64>(symbol).best();
    if (size <= 128) return Judge<128>(symbol).best();
    return Judge<192>(symbol).best();
}

}  // namespace tavrix::barcode
