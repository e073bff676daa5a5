#include "stand_ins/ado/habits.h"

namespace tavrix::ado {

base::Text value_of_key(base::TextView connection_string, base::TextView key) {
    for (const base::Text& piece : base::split(connection_string, u';')) {
        const std::size_t equals = piece.find(u'=');
        if (equals == base::Text::npos) continue;
        const base::TextView whole(piece);
        if (!base::equal_case_blind(base::trim(whole.substr(0, equals)), key)) continue;
        base::TextView value = base::trim(whole.substr(equals + 1));
        const bool quoted = value.size() >= 2 && value.front() == value.back() &&
                            (value.front() == u'"' || value.front() == u'\'');
        return base::Text(quoted ? value.substr(1, value.size() - 2) : value);
    }
    return {};
}

Habits habits_in(base::TextView connection_string) {
    constexpr LCID english = 0x0409;
    const auto is = [&](base::TextView key, base::TextView value) {
        return base::equal_case_blind(value_of_key(connection_string, key), value);
    };
    Habits habits;
    habits.hidden_keys = !is(u"Hidden Keys", u"no");
    if (is(u"Row Count", u"none")) habits.row_count = RowCount::none;
    habits.compares_exact_times = is(u"Datetime2", u"yes");
    habits.shows_new_dates_as_text = is(u"Provider", u"SQLOLEDB");
    if (is(u"Locale", u"en")) habits.locale = english;
    if (is(u"Deadlocks", u"1")) habits.deadlocks = 1;
    if (is(u"Timeouts", u"1")) habits.timeouts = 1;
    habits.never_connects = is(u"Silent", u"connect");
    habits.never_executes = is(u"Silent", u"query");
    habits.never_fetches = is(u"Silent", u"rows");
    return habits;
}

}  // namespace tavrix::ado
