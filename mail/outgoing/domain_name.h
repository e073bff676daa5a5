#pragma once

#include <string>

#include "base/text.h"

namespace tavrix::mail::outgoing {

/// The name of a mail domain as servers know it: labels beyond ASCII in Punycode (RFC 3492, RFC
/// 5891), letters made small before. An address literal ("[192.0.2.1]") stays as it is. Empty for
/// what can be no domain.
std::string domain_for_servers(base::TextView domain);

}  // namespace tavrix::mail::outgoing
