#pragma once

#include <gtest/gtest.h>

#include <vector>

#include "tests/support/sandbox.h"

namespace tavrix::test {

/// One form for every table of troubles: at this step of the service this goes wrong, then this is
/// the text that the caller is given, and this is what stands in the tables, as its test writes
/// them. "*" at the end of the text stands for whatever follows.
struct Trouble {
    std::string step;
    Json fault;  ///< or a list of faults, of which some may name a step of their own
    std::string text;
    std::string rows{};
};

using Troubles = std::vector<Trouble>;

struct Outcome {
    std::string text;
    std::string rows;
};

inline void expect_text(const std::string& result, const std::string& text,
                        const std::string& where = {}) {
    const bool is_beginning = text.ends_with('*');
    EXPECT_EQ(is_beginning ? result.substr(0, text.size() - 1) + '*' : result, text) << where;
}

inline void set_trouble(Sandbox& sandbox, const std::string& step, const Json& faults) {
    for (Json fault : faults.is_array() ? faults : Json::array({faults})) {
        if (!fault.contains("step")) fault["step"] = step;
        sandbox.fault(fault);
    }
}

/// For each line: `begin` makes everything as it is before the call, `call` gives its outcome.
template <typename Begin, typename Call>
void run_through(Sandbox& sandbox, const Troubles& table, Begin begin, Call call) {
    for (const Trouble& line : table) {
        SCOPED_TRACE(line.step + " " + line.fault.dump().substr(0, 300));
        begin();
        set_trouble(sandbox, line.step, line.fault);
        const Outcome outcome = call();
        expect_text(outcome.text, line.text);
        EXPECT_EQ(outcome.rows, line.rows);
    }
}

// Trouble that the sandbox makes.
inline Json status(int code, const std::string& body = "", int count = 1, int skip = 0) {
    return {{"kind", "status"}, {"status", code}, {"body", body}, {"count", count}, {"skip", skip}};
}
inline Json kind(const char* name, int skip = 0, int count = 1) {
    return {{"kind", name}, {"skip", skip}, {"count", count}};
}
inline Json value_at(const char* path, Json value, int skip = 0, int count = -1) {
    Json fault = kind("json", skip, count);
    fault["path"] = path;
    fault["value"] = std::move(value);
    return fault;
}
inline Json without(const char* path, int count = -1) {
    return {{"kind", "remove"}, {"path", path}, {"count", count}};
}
inline Json at_step(const char* step, Json fault) {
    fault["step"] = step;
    return fault;
}
/// Takes the place of no trouble at all.
inline const Json harmless = {{"kind", "delay"}, {"delay_ms", 0}};

}  // namespace tavrix::test
