#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "base/text.h"

namespace tavrix::ports {

/// One address for each KSeF environment; no trailing slash.
struct Origins {
    base::Text production;
    base::Text demo;
    base::Text test;
};

/// A caller's tax number (compared without "-") that has a helpdesk address of its own.
struct HelpdeskRoute {
    base::Text tax_number;
    base::Text address;
};

/// What an installation may change. Every value has a built-in default; docs/settings.md lists them
/// all.
struct Settings {
    Origins ksef{u"https://api.ksef.mf.gov.pl", u"https://api-demo.ksef.mf.gov.pl",
                 u"https://api-test.ksef.mf.gov.pl"};
    /// Replaces a leading "/api/v2" of every request path; empty leaves paths as they are. The
    /// ministry publishes "/v2".
    base::Text ksef_path_root;
    Origins qr{u"https://qr.ksef.mf.gov.pl", u"https://qr-demo.ksef.mf.gov.pl",
               u"https://qr-test.ksef.mf.gov.pl"};
    /// PEM file with certificates trusted besides the system's; UTF-8 path, empty for none.
    std::string private_ca_file;
    std::chrono::milliseconds connect_timeout{30'000};
    std::chrono::milliseconds no_progress_timeout{60'000};
    /// "" takes the system's proxy, "direct" none, anything else is the proxy's URL.
    std::string proxy;
    base::Text helpdesk_address = u"pomoc@tavrix.example";
    std::vector<HelpdeskRoute> helpdesk_routes;
    /// Natively, the folder that stands for "C:\\" in the trace log's paths.
    std::string trace_root;
};

}  // namespace tavrix::ports
