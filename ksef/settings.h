#pragma once

#include <chrono>

#include "base/text.h"

namespace tavrix::ksef {

/// One address for each KSeF environment; no trailing slash.
struct Origins {
    base::Text production;
    base::Text demo;
    base::Text test;
};

/// Where the service and its verification pages are.
struct Settings {
    Origins service{u"https://api.ksef.mf.gov.pl", u"https://api-demo.ksef.mf.gov.pl",
                    u"https://api-test.ksef.mf.gov.pl"};
    /// Replaces a leading "/api/v2" of every request path; empty leaves paths as they are. The
    /// ministry publishes "/v2".
    base::Text path_root;
    /// The longest `Retry-After` of an answer 429 that is waited out before the request is
    /// repeated; 0 takes every such answer for the failure that it is.
    std::chrono::seconds retry_after_limit{0};
    Origins qr{u"https://qr.ksef.mf.gov.pl", u"https://qr-demo.ksef.mf.gov.pl",
               u"https://qr-test.ksef.mf.gov.pl"};
};

}  // namespace tavrix::ksef
