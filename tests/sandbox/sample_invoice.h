// An FA (3) invoice that agrees with the published schema, with the parts tests vary.
#pragma once

#include <string>

namespace tavrix::sandbox::testing {

inline constexpr const char* seller_nip = "5265877635";
inline constexpr const char* buyer_nip = "7352765225";

/// Of the seller, serial number 01F20A5D352AE590, good for vouching for content; valid for a
/// century.
extern const char* const offline_certificate;

struct SampleInvoice {
    std::string seller = seller_nip;
    std::string buyer = buyer_nip;
    std::string number = "FV/1/2026";
    /// The day the tests' clock stands on.
    std::string issue_date = "2026-11-21";
    std::string kind = "VAT";
    std::string seller_name = "Zakład Usługowy Żuraw";
    std::string line_name = "Usługa serwisowa";
    /// Inserted after the buyer: other parties.
    std::string other_parties{};

    std::string xml() const;
};

}  // namespace tavrix::sandbox::testing
