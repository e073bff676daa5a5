// Numbers, dates and bank accounts as Polish readers write them. What does not look like one of
// them stays as it is: documents come from strangers.
#pragma once

#include <string>
#include <string_view>

#include "sandbox/basics/clock.h"

namespace tavrix::sandbox {

/// `1234567.5` as `1 234 567,50`, blanks being non-breaking: at least two digits after the comma.
std::string amount_text(std::string_view amount);
/// The same with the currency, `1 234,50 zł`; other currencies keep their codes.
std::string money_text(std::string_view amount, const std::string& currency);
std::string money_text(double amount, const std::string& currency);
/// `1500.250` as `1 500,25`: no digit that says nothing.
std::string quantity_text(std::string_view quantity);
/// `12345` as `12 345`.
std::string count_text(std::uint64_t count);

/// `1 234 B`.
std::string size_text(std::int64_t bytes);
/// `0.25` as `0,3`.
std::string milliseconds_text(double milliseconds);

/// `2026-11-22` as `22.11.2026`.
std::string date_text(std::string_view date);
/// `22.11.2026, 09:15:30`, Polish local time.
std::string moment_text(Instant moment);

/// `61109010140000071219812874` as `61 1090 1014 0000 0712 1981 2874`; of other countries' accounts
/// groups of four.
std::string account_text(std::string_view account);

}  // namespace tavrix::sandbox
