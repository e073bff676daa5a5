#pragma once

#include <string>

#include "com/server.h"

namespace tavrix::com {

/// The reference of all classes in Markdown, UTF-8: every member with its number, its declaration
/// as Visual Basic writes it, its sentence of help, and whether its work is done.
std::string reference_page(const Server& server);

}  // namespace tavrix::com
