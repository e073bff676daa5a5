// Interactive sessions: opening, closing, their status and their list.
#pragma once

#include "sandbox/service/service.h"

namespace tavrix::sandbox {

Answer open_online_session(Service& service, Request& request);
Answer close_online_session(Service& service, Request& request);
Answer session_status(Service& service, Request& request);
Answer list_sessions(Service& service, Request& request);

}  // namespace tavrix::sandbox
