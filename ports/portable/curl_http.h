#pragma once

#include <memory>

#include "ports/http.h"
#include "ports/settings.h"

namespace tavrix::ports {

/// An HTTP client on libcurl. Reads time-outs, proxy and private CA from `settings` once.
std::unique_ptr<Http> make_curl_http(const Settings& settings);

}  // namespace tavrix::ports
