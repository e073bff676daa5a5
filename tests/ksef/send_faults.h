#pragma once

#include "tests/ksef/send_fixture.h"
#include "tests/support/trouble.h"

namespace tavrix::ksef {

using test::at_step;
using test::expect_text;
using test::harmless;
using test::kind;
using test::run_through;
using test::status;
using test::value_at;
using test::without;

inline const std::string unknown = "Nieznany błąd";
inline const std::string session_failed = "Błąd inicjalizacji sesji KSeF:";
// As long as its beginning may be.
inline const std::string session_unknown = session_failed + "Nieznany błą";
inline const std::string accepted = "Faktura o numerze KSeF: ";

inline const test::Json wrong_token =
    value_at("status", {{"code", 450}, {"description", "Zły token"}});

}  // namespace tavrix::ksef
