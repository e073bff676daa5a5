#pragma once

#include <curl/curl.h>

#include <memory>
#include <string>

#include "ports/settings.h"

namespace tavrix::ports {

struct CurlEasyDeleter {
    void operator()(CURL* handle) const noexcept { curl_easy_cleanup(handle); }
};
using CurlEasy = std::unique_ptr<CURL, CurlEasyDeleter>;

/// A new handle; the library is made ready with the first. Throws std::bad_alloc.
CurlEasy make_curl_easy();

/// What an installation says about connections of every kind.
struct CurlConnectionSettings {
    explicit CurlConnectionSettings(const Settings& settings)
        : private_ca_file(settings.private_ca_file), proxy(settings.proxy) {}

    std::string private_ca_file;
    std::string proxy;
};

/// Sets the handle up for `url` (http or https): TLS 1.2 or newer with peer and host verified
/// against the system's and the private authorities, the proxy, no signals, no redirects.
void set_connection_options(CURL* handle, const CurlConnectionSettings& settings,
                            const std::string& url);

}  // namespace tavrix::ports
