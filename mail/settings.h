#pragma once

#include <vector>

#include "base/profile.h"
#include "base/secret.h"
#include "base/text.h"

namespace tavrix::mail {

/// A caller's tax number, without "-", that has a helpdesk address of its own.
struct HelpdeskRoute {
    base::Text tax_number;
    base::Text address;
};

/// Where the message form hands its messages in.
struct FormAccount {
    /// Empty for none: the form says so then.
    base::Text server;
    std::int32_t port = 587;
    bool ssl = true;
    /// Empty for a server that asks for none.
    base::Text user;
    base::SecretText password;
    /// Who messages come from when the host does not say.
    base::Text sender;
};

/// Where messages for help go, how mail is read and sent.
struct Settings {
    base::Profile profile = base::Profile::classic;
    base::Text helpdesk_address = u"pomoc@tavrix.example";
    std::vector<HelpdeskRoute> helpdesk_routes;
    FormAccount form_account;
};

}  // namespace tavrix::mail
