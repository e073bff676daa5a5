#pragma once

#include <curl/curl.h>

#include <memory>
#include <string>

#include "ports/connection_settings.h"

namespace tavrix::ports {

struct CurlEasyDeleter {
    void operator()(CURL* handle) const noexcept { curl_easy_cleanup(handle); }
};
using CurlEasy = std::unique_ptr<CURL, CurlEasyDeleter>;

/// A new handle; the library is made ready with the first. Throws std::bad_alloc.
CurlEasy make_curl_easy();

/// Sets the handle up for the origin of `url` (http or https): TLS 1.2 or newer with peer and host
/// verified against the system's and the private authorities, the proxy, no signals, no redirects.
void set_connection_options(CURL* handle, const ConnectionSettings& settings,
                            const std::string& url);

}  // namespace tavrix::ports
