#pragma once

#include <vector>

#include "base/profile.h"
#include "base/text.h"

namespace tavrix::mail {

/// A caller's tax number, without "-", that has a helpdesk address of its own.
struct HelpdeskRoute {
    base::Text tax_number;
    base::Text address;
};

/// Where messages for help go, and how mail is read.
struct Settings {
    base::Profile profile = base::Profile::classic;
    base::Text helpdesk_address = u"pomoc@tavrix.example";
    std::vector<HelpdeskRoute> helpdesk_routes;
};

}  // namespace tavrix::mail
