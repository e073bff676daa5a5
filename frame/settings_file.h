#pragma once

#include <string>

#include "frame/settings.h"

namespace tavrix::frame {

/// Reads a settings file (JSON, UTF-8, a byte-order mark allowed; docs/settings.md describes every
/// key). A file that does not exist gives the defaults. Anything else that cannot be taken as it
/// stands is an error and no silent default: base::AutomationError with the file, the line and the
/// key.
///
/// `text` is the file's content, `file` names it in errors.
Settings parse_settings(const std::string& text, const std::string& file);
Settings load_settings(const std::string& utf8_path);

}  // namespace tavrix::frame
