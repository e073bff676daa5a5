#include "dialogs/query_run.h"

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

}  // namespace

// A query that does not end is left to its connection: waiting for it would hold the host up.
QueryRun::~QueryRun() {
    if (connection_) connection_->cancel();
    let_go(has_ended());
}

void QueryRun::test(const base::SecretText& connection) noexcept {
    sql_.clear();
    begin(connection);
}

void QueryRun::run(const base::SecretText& connection, base::TextView sql) noexcept {
    guarded([&] { sql_ = sql; });
    begin(connection);
}

void QueryRun::begin(const base::SecretText& connection) noexcept {
    outcome_ = Outcome::none;
    failure_.clear();
    guarded([&] {
        enter(Stage::connecting, connecting_limit);
        result_ = {};
        units_read_ = 0;
        in_transaction_ = false;
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
    enter(Stage::running, running_limit);
    // Also when only the news of its beginning was lost.
    in_transaction_ = true;
    connection_->begin_transaction();
    connection_->execute(sql_, row_limit + 1);
}

void QueryRun::go_on_running() {
    if (!connection_->done()) {
        if (is_late()) fail(u"Zapytanie trwało za długo i zostało przerwane.", {});
        return;
    }
    result_.columns = connection_->columns();
    enter(Stage::reading, running_limit);
}

void QueryRun::read_rows() {
    const auto rows = connection_->rows(rows_at_once);
    if (rows.empty()) return stop(Outcome::rows);
    for (const std::vector<ports::Value>& row : rows) {
        if (result_.rows.size() == row_limit || units_read_ > text_limit) {
            result_.is_cut = true;
            return stop(Outcome::rows);
        }
        auto& texts = result_.rows.emplace_back();
        for (const ports::Value& value : row) {
            texts.push_back(cell_text(value));
            if (texts.back()) units_read_ += texts.back()->size();
        }
    }
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
    let_go(ended);
    stage_ = Stage::idle;
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
    if (connection_ && ended) {
        if (in_transaction_) connection_->roll_back();
        connection_->close();
    }
    connection_.reset();
    connection_text_.clear();
}

void QueryRun::enter(Stage stage, std::chrono::milliseconds limit) {
    stage_ = stage;
    deadline_ = clock_.steady_now() + limit;
}

}  // namespace tavrix::dialogs
