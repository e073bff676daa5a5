// `authorizationPolicy` of an authentication: from where its access tokens may be used.
#pragma once

#include <string_view>

#include "sandbox/exchange/exchange.h"
#include "sandbox/store/model.h"

namespace tavrix::sandbox {

/// The addresses that a token request allows; none when it does not limit them. Refusal 21405 for
/// what is no IPv4 address, range or network, and for more than ten of a kind.
IpRanges read_allowed_ips(const Json& body);

/// True when nothing is limited or the client's address is among the allowed ones.
bool allows(const IpRanges& allowed, std::string_view remote_address);

}  // namespace tavrix::sandbox
