#pragma once

#include <string>

#include "base/text.h"

namespace tavrix::ports {

/// A host's path as one of this system. The letter of the drive counts in either case, as on
/// Windows; names below it do not. Without a folder that stands for it the drive is nowhere.
inline std::string native_path(base::TextView path, const std::string& drive_c) {
    const bool on_drive_c = path.size() >= 2 && base::lower(path[0]) == u'c' && path[1] == u':';
    std::string name = base::to_utf8(on_drive_c ? path.substr(2) : path);
    for (char& c : name) {
        if (c == '\\') c = '/';
    }
    if (!on_drive_c) return name;
    return drive_c.empty() ? std::string() : drive_c + name;
}

}  // namespace tavrix::ports
