#pragma once

#include "tests/ksef/send_fixture.h"

namespace tavrix::ksef {

inline const std::string unknown = "Nieznany błąd";
inline const std::string session_failed = "Błąd inicjalizacji sesji KSeF:";
// As long as its beginning may be.
inline const std::string session_unknown = session_failed + "Nieznany błą";
inline const std::string accepted = "Faktura o numerze KSeF: ";

/// "*" stands for whatever follows.
inline void expect_text(const std::string& result, const std::string& text,
                        const std::string& where) {
    const bool is_beginning = text.ends_with('*');
    EXPECT_EQ(is_beginning ? result.substr(0, text.size() - 1) + '*' : result, text) << where;
}

// Trouble that the sandbox makes.
inline test::Json status(int code, const char* body = "", int count = 1) {
    return {{"kind", "status"}, {"status", code}, {"body", body}, {"count", count}};
}
inline test::Json kind(const char* name, int skip = 0) {
    return {{"kind", name}, {"skip", skip}};
}
inline test::Json value_at(const char* path, test::Json value, int skip = 0) {
    test::Json fault = kind("json", skip);
    fault["path"] = path;
    fault["value"] = std::move(value);
    fault["count"] = -1;
    return fault;
}
/// Takes the place of no trouble at all.
inline const test::Json harmless = {{"kind", "delay"}, {"delay_ms", 0}};
inline test::Json without(const char* path, int count = -1) {
    return {{"kind", "remove"}, {"path", path}, {"count", count}};
}

inline const test::Json wrong_token =
    value_at("status", {{"code", 450}, {"description", "Zły token"}});

}  // namespace tavrix::ksef
