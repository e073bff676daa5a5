#pragma once

#include <memory>

#include "ports/connection_settings.h"
#include "ports/http.h"

namespace tavrix::ports {

/// An HTTP client on libcurl. Reads time-outs, proxy and private CA from `settings` once.
std::unique_ptr<Http> make_curl_http(const ConnectionSettings& settings);

}  // namespace tavrix::ports
