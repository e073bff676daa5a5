#include "dialogs/query_run.h"

#include <algorithm>
#include <utility>

#include "base/error.h"
#include "dialogs/cell_text.h"
#include "dialogs/connection_text.h"

namespace tavrix::dialogs {
namespace {

base::TextView failure_sentence(QueryRun::Stage stage) {
    switch (stage) {
        case QueryRun::Stage::connecting:
            return u"Nie udało się połączyć z serwerem.";
        case QueryRun::Stage::reading:
            return u"Nie udało się odczytać wszystkich wierszy.";
        default:
            return u"Serwer nie wykonał zapytania.";
    }
}

// Of what the provider gives, which may be far more than what is shown of it.
std::size_t bytes_of(const ports::Value& value) {
    if (const auto* text = std::get_if<base::Text>(&value))
        return sizeof value + text->size() * sizeof(char16_t);
    const auto* bytes = std::get_if<base::Bytes>(&value);
    return sizeof value + (bytes == nullptr ? 0 : bytes->size());
}

}  // namespace

// A query that does not end is left to its connection: waiting for it would hold the host up.
QueryRun::~QueryRun() {
    if (connection_) connection_->cancel();
    if (has_ended() && !begins_to_roll_back()) let_go(true);
}

void QueryRun::test(const base::SecretText& connection) noexcept {
    begin(connection, {});
}

void QueryRun::run(const base::SecretText& connection, base::TextView sql) noexcept {
    begin(connection, sql);
}

void QueryRun::begin(const base::SecretText& connection, base::TextView sql) noexcept {
    outcome_ = Outcome::none;
    failure_.clear();
    result_ = {};
    bytes_read_ = 0;
    rows_wanted_ = first_rows;
    in_transaction_ = false;
    guarded([&] {
        enter(Stage::connecting, connecting_limit);
        sql_ = sql;
        connection_text_ = connection.copy();
        connection_ = make_();
        connection_->open(connection);
    });
}

void QueryRun::go_on() noexcept {
    guarded([this] { step(); });
}

template <typename Action>
void QueryRun::guarded(Action action) noexcept {
    try {
        try {
            action();
        } catch (const base::AutomationError& error) {
            fail(failure_sentence(stage_), error.description());
        }
    } catch (...) {
        fail(u"Zabrakło pamięci.", {});
    }
}

void QueryRun::step() {
    switch (stage_) {
        case Stage::idle:
            return;
        case Stage::connecting:
            return go_on_connecting();
        case Stage::setting_up:
        case Stage::beginning:
            return go_on_preparing();
        case Stage::running:
            return go_on_running();
        case Stage::reading:
            return read_rows();
        case Stage::stopping:
            return go_on_stopping();
    }
}

void QueryRun::go_on_connecting() {
    if (!connection_->done()) {
        if (is_late()) fail(u"Serwer nie odpowiada.", {});
        return;
    }
    if (sql_.empty()) return stop(Outcome::connected);
    enter(Stage::setting_up, preparing_limit);
    connection_->set_up();
}

void QueryRun::go_on_preparing() {
    if (!connection_->done()) {
        if (is_late()) fail(u"Serwer nie odpowiada.", {});
        return;
    }
    if (stage_ == Stage::setting_up) {
        enter(Stage::beginning, preparing_limit);
        // Also when only the news of its beginning was lost.
        in_transaction_ = true;
        return connection_->begin_transaction();
    }
    enter(Stage::running, running_limit);
    connection_->execute(sql_, row_limit + 1);
}

void QueryRun::go_on_running() {
    if (!connection_->done()) {
        if (is_late()) fail(u"Zapytanie trwało za długo i zostało przerwane.", {});
        return;
    }
    result_.columns = connection_->columns();
    if (result_.columns.empty()) return fail(u"Zapytanie nie daje żadnych wierszy.", {});
    enter(Stage::reading, running_limit);
}

void QueryRun::read_rows() {
    const auto rows = connection_->rows(rows_wanted_);
    if (rows.empty()) return stop(Outcome::rows);
    std::size_t bytes_given = 0;
    for (const std::vector<ports::Value>& row : rows) {
        if (result_.rows.size() == row_limit || bytes_read_ > memory_limit) {
            result_.is_cut = true;
            return stop(Outcome::rows);
        }
        auto& texts = result_.rows.emplace_back();
        for (const ports::Value& value : row) {
            texts.push_back(cell_text(value));
            bytes_read_ += sizeof texts.back();
            if (texts.back()) bytes_read_ += texts.back()->size() * sizeof(char16_t);
            bytes_given += bytes_of(value);
        }
    }
    rows_wanted_ =
        std::clamp(rows.size() * block_limit / (bytes_given + 1), std::size_t{1}, rows_at_once);
    if (is_late()) fail(u"Odczyt wierszy trwał za długo i został przerwany.", {});
}

void QueryRun::cancel() noexcept {
    if (stage_ != Stage::idle && stage_ != Stage::stopping) stop(Outcome::cancelled);
}

void QueryRun::stop(Outcome outcome) noexcept {
    outcome_ = outcome;
    // Cancelled before it is closed: closing would read the rest of the rows.
    if (connection_) connection_->cancel();
    enter(Stage::stopping, stopping_limit);
}

void QueryRun::fail(base::TextView sentence, base::Text providers_words) noexcept {
    if (stage_ == Stage::stopping) return;
    try {
        failure_ = sentence;
        const base::Text words =
            words_without_passwords(std::move(providers_words), connection_text_.view());
        if (!words.empty()) failure_.append(u"\n").append(words);
    } catch (...) {
        // The sentence is what there is memory for, or not even that.
    }
    stop(Outcome::failed);
}

void QueryRun::go_on_stopping() {
    const bool ended = has_ended();
    if (!ended && !is_late()) return;
    if (ended && begins_to_roll_back()) return;
    let_go(ended);
    stage_ = Stage::idle;
}

// False when there is nothing to roll back any more.
bool QueryRun::begins_to_roll_back() noexcept {
    if (!connection_ || !std::exchange(in_transaction_, false)) return false;
    connection_->roll_back();
    return true;
}

bool QueryRun::has_ended() noexcept {
    try {
        return !connection_ || connection_->done();
    } catch (...) {
        // How it ended is not asked for any more.
        return true;
    }
}

void QueryRun::let_go(bool ended) noexcept {
    if (connection_ && ended) connection_->close();
    connection_.reset();
    connection_text_.clear();
}

void QueryRun::enter(Stage stage, std::chrono::milliseconds limit) {
    stage_ = stage;
    deadline_ = clock_.steady_now() + limit;
}

}  // namespace tavrix::dialogs
