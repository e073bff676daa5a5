#pragma once

#include <memory>

#include "mail/cls_socket.h"

namespace tavrix::com {

/// An object with adapters and settings of its own that tells `events` what happens. Throws
/// base::AutomationError when the settings file beside the DLL cannot be read.
std::shared_ptr<mail::clsSocket> compose_cls_socket(std::unique_ptr<mail::SocketEvents> events);

}  // namespace tavrix::com
