#include "sandbox/http/steering_guard.h"

#include "sandbox/basics/text.h"

namespace tavrix::sandbox {
namespace {

/// The host of an origin, without scheme, port and an address's brackets.
std::string host_of(std::string_view origin) {
    origin.remove_prefix(origin.find("//") + 2);
    if (origin.starts_with('[')) return std::string(origin.substr(1, origin.find(']') - 1));
    return lower(std::string(origin.substr(0, origin.find(':'))));
}

/// A sandbox that other computers can reach cannot know every name it goes by. What nobody can
/// register for an attack is taken: addresses, and names without a dot.
bool is_nobodys_domain(const std::string& host) {
    return host.find_first_not_of("0123456789.") == std::string::npos ||
           host.find(':') != std::string::npos || host.find('.') == std::string::npos;
}

bool is_own_name(const std::string& host, const std::string& bind_address) {
    const auto is_loopback = [](const std::string& name) {
        return name == "localhost" || name == "::1" || name == "127.0.0.1";
    };
    if (is_loopback(host) || host == lower(bind_address)) return true;
    return !is_loopback(bind_address) && is_nobodys_domain(host);
}

}  // namespace

std::string refuse_steering(const Request& request, const std::string& bind_address) {
    const std::string_view origin = request.header("Origin"),
                           site = request.header("Sec-Fetch-Site");
    if (!origin.empty() && origin != request.origin)
        return "a page of another site asks: " + std::string(origin);
    if (site == "cross-site" || site == "same-site") return "a page of another site asks";
    return refuse_name(request, bind_address);
}

std::string refuse_name(const Request& request, const std::string& bind_address) {
    const std::string host = host_of(request.origin);
    return is_own_name(host, bind_address) ? ""
                                           : "the sandbox does not go by the name in Host: " + host;
}

}  // namespace tavrix::sandbox
