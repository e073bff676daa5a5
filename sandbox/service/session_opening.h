// What opening a session is about in both ways of sending.
#pragma once

#include "sandbox/service/service.h"

namespace tavrix::sandbox {

/// The session that a request's body asks for, not yet among the others. Its key is empty when it
/// could not be decrypted: the service finds that out after it has answered. Refusals 21405 and
/// 21470.
Session read_new_session(Service& service, const Request& request, const Json& body,
                         SessionKind kind);

/// Refusal 21180 when a session is not open or not of that kind.
void check_may_close(const Session& session, SessionKind kind);

}  // namespace tavrix::sandbox
