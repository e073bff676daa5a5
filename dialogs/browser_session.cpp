#include "dialogs/browser_session.h"

#include <algorithm>

#include "dialogs/cell_text.h"

namespace tavrix::dialogs {
namespace {

using base::Text;

Text database_words(const ListedDatabase& database) {
    Text words = database.name.empty() ? Text(u"bazą") : u"bazą " + database.name;
    if (!database.server.empty()) words += u" na serwerze " + database.server;
    return words;
}

}  // namespace

BrowserSession::BrowserSession(std::vector<ListedDatabase> databases,
                               ports::MakeQueryConnection make, ports::Clock& clock)
    : databases_(std::move(databases)), run_(std::move(make), clock) {
    if (databases_.empty()) status_ = u"Na liście nie ma żadnej bazy danych.";
}

bool BrowserSession::has_database(std::size_t database) {
    if (database < databases_.size()) return true;
    if (!databases_.empty()) status_ = u"Wybierz bazę z listy.";
    return false;
}

void BrowserSession::connect(std::size_t database) {
    if (run_.is_busy() || !has_database(database)) return;
    database_ = database;
    asked_to_stop_ = false;
    status_ = u"Łączę się z " + database_words(databases_[database]) + u"…";
    page_start_ = 0;
    run_.test(databases_[database].connection);
}

std::optional<Refusal> BrowserSession::run(std::size_t database, base::TextView sql) {
    if (run_.is_busy() || !has_database(database)) return std::nullopt;
    if (auto refusal = refusal_of(sql)) {
        status_ = refusal->words;
        return refusal;
    }
    database_ = database;
    asked_to_stop_ = false;
    status_ = u"Wykonuję zapytanie…";
    page_start_ = 0;
    run_.run(databases_[database].connection, sql);
    return std::nullopt;
}

bool BrowserSession::stop() {
    if (!can_stop()) return false;
    asked_to_stop_ = true;
    run_.cancel();
    status_ = u"Przerywam…";
    return true;
}

bool BrowserSession::go_on() {
    if (!run_.is_busy()) return false;
    run_.go_on();
    if (run_.is_busy()) return false;
    status_ = outcome_text();
    return true;
}

Text BrowserSession::outcome_text() const {
    switch (run_.outcome()) {
        case QueryRun::Outcome::connected:
            return u"Połączono z " + database_words(databases_[database_]) + u".";
        case QueryRun::Outcome::rows: {
            const Text count = base::to_decimal(static_cast<std::int64_t>(result().rows.size()));
            if (!result().is_cut) return u"Liczba wierszy: " + count + u".";
            return u"Pokazano pierwsze wiersze (" + count +
                   u"), zapytanie daje ich więcej. Zawęź warunki, aby zobaczyć pozostałe.";
        }
        case QueryRun::Outcome::cancelled:
            return u"Przerwano.";
        default:
            return run_.failure();
    }
}

std::size_t BrowserSession::page_rows() const noexcept {
    return std::min(page_size, result().rows.size() - std::min(page_start_, result().rows.size()));
}

void BrowserSession::show_next_page() noexcept {
    if (has_next_page()) page_start_ += page_size;
}

void BrowserSession::show_previous_page() noexcept {
    page_start_ -= std::min(page_start_, page_size);
}

Text BrowserSession::page_text() const {
    const std::size_t rows = page_rows();
    if (rows == 0) return {};
    const auto number = [](std::size_t value) {
        return base::to_decimal(static_cast<std::int64_t>(value));
    };
    return u"Wiersze " + number(page_start_ + 1) + u"–" + number(page_start_ + rows) + u" z " +
           number(result().rows.size());
}

std::optional<Text> BrowserSession::cell(std::size_t row, std::size_t column) const {
    if (row >= page_rows()) return std::nullopt;
    const auto& cells = result().rows[page_start_ + row];
    if (column >= cells.size() || !cells[column]) return std::nullopt;
    return one_line(*cells[column]);
}

Text BrowserSession::whole_row(std::size_t row) const {
    constexpr std::size_t longest_row = 64'000;
    Text text;
    if (row >= page_rows()) return text;
    const auto& cells = result().rows[page_start_ + row];
    const std::size_t columns = std::min(cells.size(), result().columns.size());
    for (std::size_t column = 0; column < columns && text.size() <= longest_row; ++column) {
        text += column_title(column) + u": " + cells[column].value_or(u"NULL") + u"\n";
    }
    if (text.size() <= longest_row) return text;
    return Text(cut_whole(text, longest_row)) + u"…";
}

Text BrowserSession::column_title(std::size_t column) const {
    const Text& name = result().columns.at(column);
    return name.empty() ? u"kolumna " + base::to_decimal(static_cast<std::int64_t>(column) + 1)
                        : one_line(name);
}

}  // namespace tavrix::dialogs
