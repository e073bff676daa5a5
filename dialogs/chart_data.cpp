#include "dialogs/chart_data.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "base/error.h"
#include "dialogs/chart_axis.h"
#include "dialogs/grid_numbers.h"

namespace tavrix::dialogs {
namespace {

using base::Text;
using base::TextView;
using base::Value;

struct TextOfValue {
    Text operator()(const Text& text) const { return on_one_line(text); }
    Text operator()(std::int64_t number) const {
        return polish_number(static_cast<double>(number), 0);
    }
    Text operator()(double number) const { return trimmed_number(number, 6); }
    Text operator()(bool value) const { return value ? u"tak" : u"nie"; }
    Text operator()(const base::DateTime& date) const {
        const auto padded = [](int number) {
            return (number < 10 ? u"0" : u"") + base::to_decimal(number);
        };
        return padded(date.day) + u"." + padded(date.month) + u"." + base::to_decimal(date.year);
    }
    Text operator()(const auto&) const { return {}; }
};

std::int32_t whole_number(const Value& value) {
    constexpr double largest = 1 << 30;
    const std::optional<double> number = number_of(value);
    if (!number) {
        throw base::AutomationError(base::ErrorNumber::type_mismatch, u"Tavrix",
                                    u"tabela nie podaje liczby wierszy i kolumn");
    }
    return static_cast<std::int32_t>(std::clamp(*number, 0.0, largest));
}

/// A member that not every grid has: asked until it refuses once.
class OptionalMember {
  public:
    OptionalMember(ports::HostObject& grid, const char16_t* name) : grid_(grid), name_(name) {}

    std::optional<Value> get(std::span<const std::int32_t> arguments) {
        if (!is_there_) return std::nullopt;
        try {
            return grid_.get(name_, arguments);
        } catch (const base::AutomationError&) {
            is_there_ = false;
            return std::nullopt;
        }
    }
    bool is_zero_for(std::int32_t number) {
        const std::optional<Value> value = get(std::array{number});
        return value && number_of(*value) == 0.0;
    }
    bool is_true_for(std::int32_t number) {
        const std::optional<Value> value = get(std::array{number});
        if (!value) return false;
        if (const bool* truth = std::get_if<bool>(&*value)) return *truth;
        return number_of(*value).value_or(0) != 0;
    }

  private:
    ports::HostObject& grid_;
    const char16_t* name_;
    bool is_there_ = true;
};

/// What grids, and hosts' own run-time libraries, say of a row that is not there.
bool is_subscript_error(base::ErrorNumber number) noexcept {
    constexpr std::uint32_t of_controls = 0x800A0000;
    constexpr std::uint32_t numbers[] = {9, 381, 30009, 30010};
    return std::ranges::any_of(numbers, [&](std::uint32_t each) {
        return static_cast<std::uint32_t>(number) == of_controls + each;
    });
}

/// To what may be read of a cell at all.
void cut(Text& text) {
    constexpr std::size_t longest_cell = 4000;
    if (text.size() <= longest_cell) return;
    text.resize(longest_cell);
    // Not between the halves of a character.
    if ((text.back() & 0xFC00) == 0xD800) text.pop_back();
}

class Reader {
  public:
    Reader(ports::HostObject& grid, const ChartRecord& record) : grid_(grid), record_(record) {}

    ChartData read() {
        rows_ = whole_number(grid_.get(u"Rows", {}));
        columns_ = whole_number(grid_.get(u"Cols", {}));
        choose_rows();
        has_labels_ = record_.x3 >= 0 && record_.x3 < columns_;
        choose_columns();
        if (series_columns_.empty()) {
            data_.failure = u"Wskazanej kolumny nie ma w tabeli.";
            return std::move(data_);
        }
        read_headings();
        read_rows();
        // Not one cell.
        if (refusal_ && !has_answered_) throw *refusal_;
        return std::move(data_);
    }

  private:
    void choose_rows() {
        const std::optional<Value> fixed = OptionalMember(grid_, u"FixedRows").get({});
        const std::int32_t top = fixed ? whole_number(*fixed) : 0;
        first_ = std::min(record_.x1, record_.x2);
        last_ = std::max(record_.x1, record_.x2);
        if (first_ == 0 && last_ == 0) {
            // Without a word about its headings a grid has one row of them.
            first_ = fixed ? top : 1;
            last_ = rows_ - 1;
        }
        first_ = std::max(first_, top);
        last_ = std::min(last_, rows_ - 1);
        data_.rows_asked = last_ < first_ ? 0 : last_ - first_ + 1;
    }

    void choose_columns() {
        const auto is_column = [&](std::int32_t column) {
            return column >= 0 && column < columns_;
        };
        if (is_column(record_.column)) series_columns_.push_back(record_.column);
        OptionalMember hidden(grid_, u"ColHidden");
        OptionalMember width(grid_, u"ColWidth");
        const auto checks =
            static_cast<std::int32_t>(std::min<std::size_t>(record_.checks.size(), 1000));
        for (std::int32_t column = 0; column < checks; ++column) {
            if (series_columns_.size() == most_chart_series) return;
            if (record_.checks[static_cast<std::size_t>(column)] != u'1' || !is_column(column) ||
                column == record_.column || (has_labels_ && column == record_.x3) ||
                hidden.is_true_for(column) || width.is_zero_for(column)) {
                continue;
            }
            series_columns_.push_back(column);
        }
    }

    void read_headings() {
        const bool has_headings = first_ > 0;
        const auto heading = [&](std::int32_t column) {
            return has_headings && rows_ > 0 ? Text(base::trim(text_at(0, column))) : Text();
        };
        data_.label_heading = on_one_line(record_.text);
        if (data_.label_heading.empty() && has_labels_) data_.label_heading = heading(record_.x3);
        for (const std::int32_t column : series_columns_) {
            Text name = heading(column);
            if (name.empty()) name = u"Kolumna " + base::to_decimal(column + 1);
            data_.series.push_back({std::move(name), {}, {}});
        }
    }

    void read_rows() {
        OptionalMember subtotal(grid_, u"IsSubtotal");
        OptionalMember hidden(grid_, u"RowHidden");
        OptionalMember height(grid_, u"RowHeight");
        const std::int32_t count = std::min(data_.rows_asked, most_chart_rows);
        for (std::int32_t row = first_; row - first_ < count; ++row) {
            if (subtotal.is_true_for(row)) {
                --data_.rows_asked;
            } else if (hidden.is_true_for(row) || height.is_zero_for(row)) {
                --data_.rows_asked;
                ++data_.hidden_rows;
            } else {
                read_row(row);
                if (has_ended()) return drop_rows(refused_rows_);
            }
        }
    }

    void read_row(std::int32_t row) {
        const int refused_before = refused_cells_;
        data_.labels.push_back(has_labels_ ? text_at(row, record_.x3) : numbered(row));
        for (std::size_t i = 0; i < series_columns_.size(); ++i) {
            const Value value = cell(row, series_columns_[i]);
            data_.series[i].values.push_back(number_of(value));
            data_.series[i].texts.push_back(std::visit(TextOfValue{}, value));
        }
        const auto asked = static_cast<int>(series_columns_.size()) + (has_labels_ ? 1 : 0);
        const bool is_refused = refused_cells_ - refused_before == asked;
        refused_rows_ = is_refused ? refused_rows_ + 1 : 0;
    }

    /// A grid may have fewer rows than it says.
    bool has_ended() const {
        constexpr std::size_t most_refused_rows = 5;
        return refused_rows_ == most_refused_rows ||
               (refused_rows_ > 0 && is_subscript_error(refusal_->number()));
    }

    void drop_rows(std::size_t count) {
        const std::size_t kept = data_.labels.size() - count;
        data_.labels.resize(kept);
        for (ChartSeries& series : data_.series) {
            series.values.resize(kept);
            series.texts.resize(kept);
        }
    }

    Text numbered(std::int32_t row) const {
        const Text number = base::to_decimal(row - first_ + 1);
        return record_.text.empty() ? number : on_one_line(record_.text) + u" " + number;
    }

    /// A cell that the grid does not give is a missing one.
    Value cell(std::int32_t row, std::int32_t column) {
        try {
            Value value = grid_.get(u"TextMatrix", std::array{row, column});
            if (Text* const text = std::get_if<Text>(&value)) cut(*text);
            has_answered_ = true;
            return value;
        } catch (const base::AutomationError& error) {
            ++refused_cells_;
            refusal_ = error;
            return {};
        }
    }
    Text text_at(std::int32_t row, std::int32_t column) {
        return std::visit(TextOfValue{}, cell(row, column));
    }

    ports::HostObject& grid_;
    const ChartRecord& record_;
    ChartData data_;
    std::int32_t rows_ = 0;
    std::int32_t columns_ = 0;
    std::int32_t first_ = 0;
    std::int32_t last_ = 0;
    bool has_labels_ = false;
    std::vector<std::int32_t> series_columns_;
    bool has_answered_ = false;
    std::optional<base::AutomationError> refusal_;
    int refused_cells_ = 0;
    /// One behind the other, up to the last one that was read.
    std::size_t refused_rows_ = 0;
};

ChartData failed(TextView why) {
    ChartData data;
    data.failure = u"Nie można odczytać tabeli programu: " + on_one_line(Text(why));
    return data;
}

}  // namespace

ChartData read_chart_data(ports::HostObject& grid, const ChartRecord& record) {
    try {
        return Reader(grid, record).read();
    } catch (const base::AutomationError& error) {
        return failed(error.description());
    } catch (const std::bad_alloc&) {
        return failed(u"brakuje pamięci");
    } catch (const std::exception&) {
        return failed(u"błąd wewnętrzny");
    }
}

}  // namespace tavrix::dialogs
