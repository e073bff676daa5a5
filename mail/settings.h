#pragma once

#include <vector>

#include "base/text.h"

namespace tavrix::mail {

/// A caller's tax number, without "-", that has a helpdesk address of its own.
struct HelpdeskRoute {
    base::Text tax_number;
    base::Text address;
};

/// Where messages for help go.
struct Settings {
    base::Text helpdesk_address = u"pomoc@tavrix.example";
    std::vector<HelpdeskRoute> helpdesk_routes;
};

}  // namespace tavrix::mail
