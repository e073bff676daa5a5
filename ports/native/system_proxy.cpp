#include "ports/portable/system_proxy.h"

namespace tavrix::ports {

// libcurl reads https_proxy and its like from the environment by itself.
std::string system_proxy_for(const std::string&) {
    return {};
}

}  // namespace tavrix::ports
