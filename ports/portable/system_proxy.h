#pragma once

#include <string>

namespace tavrix::ports {

/// The proxy that the system prescribes for `url`, as libcurl takes it; "" when it prescribes none
/// or when libcurl itself reads what the system says (natively: the environment).
std::string system_proxy_for(const std::string& url);

}  // namespace tavrix::ports
