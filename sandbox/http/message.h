// A request out of its parts and an answer as the bytes that leave.
#pragma once

#include "sandbox/exchange/exchange.h"

namespace tavrix::sandbox {

/// Fills path, query and origin of a request from its target and headers. A target with a host in
/// it, as clients of proxies send it, is shortened to the path (RFC 9112, 3.2.2).
/// \param scheme "http" or "https". \param local_host what stands for a missing Host header.
void complete_request(Request& request, std::string_view scheme, const std::string& local_host);

/// How the connection goes on after an answer.
struct Framing {
    bool keeps_open = true;
    int idle_s = 60;
    /// The answer to HEAD: the length is there, the body is not.
    bool head_only = false;
};

/// What the answer's own headers name is not added a second time, so that a fault can replace it.
std::string answer_text(const Answer& answer, const Framing& framing);

}  // namespace tavrix::sandbox
