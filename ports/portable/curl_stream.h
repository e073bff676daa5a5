#pragma once

#include <memory>

#include "ports/connection_settings.h"
#include "ports/stream.h"

namespace tavrix::ports {

/// A stream on libcurl, through the proxy where there is one. Reads proxy and private CA from
/// `settings` once; time-outs are the caller's.
std::unique_ptr<Stream> make_curl_stream(const ConnectionSettings& settings);

/// The same for mail, which goes to its servers directly: the proxies of the web refuse their
/// ports.
std::unique_ptr<Stream> make_curl_mail_stream(ConnectionSettings settings);

}  // namespace tavrix::ports
