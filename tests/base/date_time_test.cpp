#include "base/date_time.h"

#include <gtest/gtest.h>

namespace tavrix::base {
namespace {

TEST(CivilDays, RunWithoutAGapThroughLeapYears) {
    EXPECT_EQ(days_from_civil(2000, 3, 1), 11017);
    DateTime previous{};
    for (std::int64_t day = days_from_civil(1899, 12, 31); day < 48'000; ++day) {
        const DateTime date = civil_from_days(day);
        ASSERT_EQ(days_from_civil(date.year, date.month, date.day), day);
        ASSERT_LT(previous, date);
        previous = date;
    }
}

// The days that OLE Automation's documentation gives.
TEST(AutomationDate, CountsFromThe30thOfDecember1899) {
    EXPECT_EQ(from_automation_date(0.0), (DateTime{1899, 12, 30}));
    EXPECT_EQ(from_automation_date(2.5), (DateTime{1900, 1, 1, 12}));
    EXPECT_EQ(from_automation_date(-1.25), (DateTime{1899, 12, 29, 6}))
        << "the fraction is the time, also before day 0";
    const DateTime moment{2026, 11, 14, 21, 49, 5};
    EXPECT_EQ(from_automation_date(to_automation_date(moment)), moment);
    EXPECT_EQ(from_automation_date(46340.0 - 1e-9), from_automation_date(46340.0))
        << "rounded to whole seconds";
}

TEST(DateText, ReadsWhatItWritesAndNothingElse) {
    const DateTime moment{2026, 2, 28, 7, 5, 9};
    EXPECT_EQ(format_date(moment), u"2026-02-28");
    EXPECT_EQ(format_date_time(moment), u"2026-02-28 07:05:09");
    EXPECT_EQ(parse_date_time(u"2026-02-28T07:05:09.123"), moment);
    EXPECT_EQ(parse_date_time(u"2024-02-29"), (DateTime{2024, 2, 29}));
    for (const char16_t* bad :
         {u"", u"2026-02-29", u"2026-13-01", u"2026-00-01", u"2026-1-01", u"20260101",
          u"2026-01-01 24:00", u"2026-01-01 07:05:09x", u"2026-01-01 7:05"}) {
        EXPECT_FALSE(parse_date_time(bad)) << to_utf8(bad);
    }
}

}  // namespace
}  // namespace tavrix::base
