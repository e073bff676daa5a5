// Who may steer the sandbox: not the pages of other sites, open in a browser on this computer.
#pragma once

#include "sandbox/exchange/exchange.h"

namespace tavrix::sandbox {

/// Why a request may not steer the sandbox; empty when it may. A page of another site gives itself
/// away by Origin or Sec-Fetch-Site. One whose own name has been pointed at this computer (DNS
/// rebinding) has neither, but its name stands in Host.
/// \param bind_address what the sandbox was told to listen on.
std::string refuse_steering(const Request& request, const std::string& bind_address);
/// The part of it that is about Host, which keeps such a site from reading, too.
std::string refuse_name(const Request& request, const std::string& bind_address);

}  // namespace tavrix::sandbox
