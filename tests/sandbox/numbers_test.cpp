// Published vectors and the texts of moments.
#include <gtest/gtest.h>

#include "sandbox/basics/clock.h"
#include "sandbox/basics/crypto.h"
#include "sandbox/basics/ksef_number.h"

namespace tavrix::sandbox::testing {
namespace {

TEST(Numbers, TheChecksumAgreesWithPublishedExamples) {
    EXPECT_EQ(crc8("123456789"), 0xF4);  // check value of CRC-8/SMBUS
    // The ministry's "Numer KSeF" and the examples of confirmations and of the interface.
    for (const char* number :
         {"5265877635-20250826-0100001AF629-AF", "5265877635-20250916-0200A0D6723E-C2",
          "5265877635-20250916-010040741B3E-46", "5265877635-20250626-010080DD2B5E-26"})
        EXPECT_EQ(
            make_ksef_number("5265877635", std::string(number, 11, 8), std::string(number, 20, 12)),
            number);
    const std::pair<const char*, bool> forms[] = {
        {"5265877635-20250826-0100001AF629-00", true},
        {"5265877635-20250826-010000-1AF629-AF", true},
        {"5265877635-20250826-0100001AF629-af", false},
        {"5265877635-20250826-0100001AF62-AF", false},
        {"0265877635-20250826-0100001AF629-AF", false},
        {"5265877635-20251326-0100001AF629-AF", false},
    };
    for (const auto& [number, good] : forms)
        EXPECT_EQ(has_ksef_number_form(number), good) << number;
}

TEST(Times, AreWrittenAsTheServiceWritesThem) {
    const std::tuple<const char*, const char*, TimeFormat> cases[] = {
        {"2025-09-18T12:24:01.0154320Z", "2025-09-18T12:24:01.015432+00:00", {7, true}},
        {"2025-09-18T15:00:30.0000000Z", "2025-09-18T15:00:30+00:00", {7, true}},
        {"2025-09-18T15:00:30.9999999Z", "2025-09-18T15:00:30.999+00:00", {3, true}},
    };
    for (const auto& [moment, text, format] : cases)
        EXPECT_EQ(format.text(*parse_instant(moment)), text);
    for (const char* bad : {"", "2026-02-29", "2026-11-21T24:00:00", "2026-11-21T08:00:00+1"})
        EXPECT_FALSE(parse_instant(bad)) << bad;
}

TEST(Times, PolishDaysFollowSummerTime) {
    const std::pair<const char*, const char*> cases[] = {
        // Changes of 2026: 29 March and 25 October, both at 01:00 UTC.
        {"2026-03-29T00:59:59.999Z", "2026-03-29T01:59:59.999+01:00"},
        {"2026-03-29T01:00:00Z", "2026-03-29T03:00:00.000+02:00"},
        {"2026-10-25T01:00:00Z", "2026-10-25T02:00:00.000+01:00"},
    };
    for (const auto& [moment, text] : cases)
        EXPECT_EQ(polish_time_text(*parse_instant(moment)), text);
    const std::pair<const char*, const char*> read[] = {
        {"2026-03-29T01:59:59", "2026-03-29T00:59:59Z"},
        {"2026-03-29T03:00:00", "2026-03-29T01:00:00Z"},
        {"2026-10-25T01:59:59", "2026-10-24T23:59:59Z"},
        {"2026-10-25T02:30:00", "2026-10-25T01:30:00Z"},
    };
    for (const auto& [local, moment] : read)
        EXPECT_EQ(parse_polish_instant(local), parse_instant(moment)) << local;
    EXPECT_EQ(polish_date_text(*parse_instant("2026-11-21T23:00:00Z")), "2026-11-22");
}

TEST(Cryptography, Base64IsStrict) {
    // RFC 4648, 10.
    EXPECT_EQ(base64_decode("Zm9vYmE="), "fooba");
    for (const char* bad : {"Zm9vYg", "Zm9vYg=", "Zm9v\nYg==", "Zm=vYg==", " m9v", "===="})
        EXPECT_FALSE(base64_decode(bad)) << bad;
}

}  // namespace
}  // namespace tavrix::sandbox::testing
